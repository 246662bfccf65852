DIM a
If True Then
MSGBOX 1
Else
If a Then
MSGBOX 2
End If
MSGBOX 3
End If
