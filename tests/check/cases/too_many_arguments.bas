MsgBox Left("abc", 1, 2)
