MsgBox Date + 1
