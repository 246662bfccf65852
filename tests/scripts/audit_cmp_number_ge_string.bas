DIM x
x = 2 >= "b"
