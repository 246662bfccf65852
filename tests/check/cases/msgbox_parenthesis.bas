MsgBox("hi")
