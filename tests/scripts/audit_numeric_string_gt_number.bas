DIM x
x = "5" > 3
