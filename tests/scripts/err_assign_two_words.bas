DIM a, b
a b = 1