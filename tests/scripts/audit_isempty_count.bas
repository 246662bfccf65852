DIM x
x = IsEmpty(1, 2)
