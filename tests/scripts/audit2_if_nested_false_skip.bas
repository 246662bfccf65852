If False Then
If True Then
MSGBOX 1
End If
Else
MSGBOX 2
End If
