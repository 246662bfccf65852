DIM a, b ,c
c = (1 + 2) * 3
a = 1 + 2 * 3
b = "it's" ' note
DIM a
