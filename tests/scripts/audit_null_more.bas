DIM a, b, c, d, e
a = -NULL
b = NULL / 2
c = NULL ^ 2
d = NULL & NULL
e = "a" * NULL
