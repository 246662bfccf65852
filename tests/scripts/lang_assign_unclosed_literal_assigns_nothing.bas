DIM x, n
x = "abc
n = 1