If 0 Then
If 1 Then MSGBOX 1
Else
MSGBOX 2
End If
