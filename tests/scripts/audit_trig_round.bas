DIM a, b, c, d, e, f, g
a = ROUND(ATN(1) * 4, 6)
b = COS(0)
c = SIN(0) + TAN(0)
d = ROUND(1.23456, 2.6)
e = CDbl(TRUE)
f = #2005-03-01# - #2005-02-01#
g = MaxDay(2, 2004)
