DIM x
x = LEFT 1
