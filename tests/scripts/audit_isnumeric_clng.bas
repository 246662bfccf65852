DIM a, b, c, d, e, f, g
a = IsNumeric(EMPTY)
b = IsNumeric(NULL)
c = IsNumeric("")
d = IsNumeric(" 12 ")
e = CLng(-2.5)
f = CLng("12")
g = HEX(255.5)
