DIM a
a = 5
DIM a