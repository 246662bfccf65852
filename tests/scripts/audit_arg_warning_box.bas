DIM x
x = LEFT("a" < 1, 1)
