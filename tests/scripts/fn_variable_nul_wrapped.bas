DIM x, y
x = CHR(0) & "and" & CHR(0)
y = x
