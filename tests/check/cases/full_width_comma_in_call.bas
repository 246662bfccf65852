MsgBox Left("abc"，2)
