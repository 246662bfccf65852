DIM x
x = Hex(1, 2)
