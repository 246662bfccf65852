If 0 Then
If 0 Then
Else
MSGBOX 1
End If
MSGBOX 2
Else
MSGBOX 3
End If
