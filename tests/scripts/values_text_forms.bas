DIM a, b, c, d, e, f, g
a = 0.1 + 0.2 & ""
b = "1" + 2
c = "ab" + "cd"
d = CLng(2.5) + CLng(3.5)
e = #2005-02-28# + 1
f = Asc("中")
g = Chr(-10544)
MSGBOX #2005-03-01 13:05:00#
