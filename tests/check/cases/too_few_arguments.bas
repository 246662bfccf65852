MsgBox Mid("abc")
