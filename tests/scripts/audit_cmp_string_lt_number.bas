DIM x
x = "a" < 1
