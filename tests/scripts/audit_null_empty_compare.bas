DIM a, b, c, d, e, f, g
a = NULL = 1
b = NULL < 1
c = 1 = "1"
d = 1 <> "1"
e = NOT EMPTY
f = "12" AND 1
g = "abc" > "ABC"
