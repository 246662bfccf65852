DIM x
x = LEFT("abc", (2)
