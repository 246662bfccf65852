DIM a, b, c, d, e, f
a = CSTR(0.1 + 0.2)
b = LEN(1/3)
c = CSTR(10^20)
d = TRUE + 1
e = 1 & 2
f = "a" + EMPTY
