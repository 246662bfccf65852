If 1 > 0
MsgBox 1
End If
