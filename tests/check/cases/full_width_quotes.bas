MsgBox “abc”
