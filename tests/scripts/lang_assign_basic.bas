DIM a
a = 1 + 2*3
