DIM a, b, c, d, e, f, g, h
a = NULL + 5
b = NULL - 5
c = NULL * 5
d = 5 - null
e = "ab" + "cd"
f = "1" + 2
g = Null & "x"
h = NULL + NULL
