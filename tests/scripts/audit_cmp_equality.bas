DIM a, b, c, d, e, f, g, h
a = "a" = 1
b = "ABC" = "abc"
c = "abc" = "abc"
d = "b" > "a"
e = 2 >= 2
f = 1 <> 2
g = 1 != 1
h = "a" <> 1
