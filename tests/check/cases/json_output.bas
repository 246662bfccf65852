MsgBox Lefft("a"，1)
