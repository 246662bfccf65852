DIM x
x = 1 AND "a"
