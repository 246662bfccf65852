MsgBox=1
