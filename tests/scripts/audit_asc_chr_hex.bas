DIM a, b, c, d, e
a = ASC("AB")
b = CHR(66)
c = HEX(255)
d = CSTR(1.5)
e = asc(7)
