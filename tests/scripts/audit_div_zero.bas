DIM x
x = 5 / 0
