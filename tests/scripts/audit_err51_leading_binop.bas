DIM x
x = * 2
