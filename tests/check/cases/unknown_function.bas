MsgBox Lefft("abc", 2)
