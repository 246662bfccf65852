DIM a
a = 5
a = UBound(a)
