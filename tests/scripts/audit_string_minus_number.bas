DIM x
x = "abc" - 1
