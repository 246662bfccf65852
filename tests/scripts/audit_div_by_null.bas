DIM x
x = 2 / NULL
