DIM a
a = "a" < 1
