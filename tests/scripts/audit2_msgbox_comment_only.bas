DIM a
MsgBox 'x
