DIM x
x = NULL
MsgBox x
MsgBox 2