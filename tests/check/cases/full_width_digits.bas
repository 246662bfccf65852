MsgBox １２ + 1
