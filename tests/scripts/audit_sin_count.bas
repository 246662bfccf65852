DIM x
x = SIN()
