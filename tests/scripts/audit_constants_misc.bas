DIM a, b, c, d, e, f
a = "a" & CRLF & "b" & vbcrlf
b = EMPTY
c = "5" * "2"
d = #2005-03-01# + 1
e = LEN(LEFT("a b c", 3))
f = LEN(1 + 2) + MaxDay(12, 2005) + MaxDay(#2005-12-31#) + IsEmpty("")
