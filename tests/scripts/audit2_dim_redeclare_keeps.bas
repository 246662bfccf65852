DIM a, b
a = 5
DIM b, a, c
