DIM a, b, c, d, e
a = ROUND(2.567, 2)
b = Round(NULL)
c = ROUND(2.5)
d = ROUND(3.5)
e = ROUND(-1.25, 1)
