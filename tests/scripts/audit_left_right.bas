DIM a, b, c, d, e, f
a = LEFT("abc", 5)
b = LEFT(12345, 2)
c = RIGHT("abcdef", 2)
d = Left("abc", 0)
e = LEFT("a,b,c", 3)
f = LEFT(UCASE("abcdef")，LEN("abc"))
