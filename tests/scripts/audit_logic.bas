DIM a, b, c, d, e, f
a = NOT 0
b = 2 AND 4
c = 0 OR 0
d = NOT 1 = 2
e = 1 = 1 AND 2 > 3
f = TRUE OR FALSE AND FALSE
