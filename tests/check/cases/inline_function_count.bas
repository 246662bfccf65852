MsgBox Abs(1, 2)
