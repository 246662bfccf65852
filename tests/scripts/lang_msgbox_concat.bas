MsgBox "a" & 1
