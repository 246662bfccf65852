MsgBox （1 + 2）* 3
