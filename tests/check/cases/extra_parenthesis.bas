MsgBox (1 + 2))
