DIM a
a = b + 1
