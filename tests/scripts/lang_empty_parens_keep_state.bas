DIM x
x = () + 1
