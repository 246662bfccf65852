DIM s, x
s = "a"
x = 1
MsgBox s & x