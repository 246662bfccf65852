DIM x
x = MID(5, 1)
