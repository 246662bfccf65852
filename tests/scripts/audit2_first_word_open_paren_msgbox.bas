MsgBox("x")
