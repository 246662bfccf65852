DIM a, b, c, d, e, f
a = ABS(-2.5)
b = INT(-2.5)
c = int(2.5)
d = SQR(16)
e = TRIM("  ab  ")
f = YEAR(#2005-03-15#)
