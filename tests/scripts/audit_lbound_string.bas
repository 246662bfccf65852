DIM x
x = LBound("abc")
