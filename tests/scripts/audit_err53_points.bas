DIM x
x = 1.2.3
