MsgBox 1
End If
