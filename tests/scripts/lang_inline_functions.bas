DIM a, b, c
a = int(-2.5)
b = Len(12.5)
c = 2^3^2
