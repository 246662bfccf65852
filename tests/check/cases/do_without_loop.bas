Do While 1 > 2
MsgBox 1
