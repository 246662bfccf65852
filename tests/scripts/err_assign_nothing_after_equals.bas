DIM x
x =