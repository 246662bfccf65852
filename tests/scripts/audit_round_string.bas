DIM x
x = ROUND("x")
