DIM e
MsgBox e
MsgBox 1 > 2
MsgBox Empty & "|"
