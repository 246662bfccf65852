DIM a, b, c, d, e, f
a = CLng(2.5)
b = clng(3.5)
c = CDbl("1.5")
d = IsNumeric("12")
e = IsNumeric("abc")
f = CDate("2005-03-01")
