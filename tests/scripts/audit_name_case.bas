DIM a, b, c, d, e
a = len("abc")
b = Len(12.5)
c = ucase("ab")
d = lCaSe("AB")
e = UCASE(12)
