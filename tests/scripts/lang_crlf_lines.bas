DIM a
a = 2
