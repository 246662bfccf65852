DIM a
a = 3
