Else
MsgBox 1
