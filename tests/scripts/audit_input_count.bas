DIM x
x = Input(1, 2, 3, 4)
