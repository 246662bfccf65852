DIM a, b, c
a = MID("abcdef", 2)
b = mid("abcdef", 2, 3)
c = Mid("a,b" & "c", 2, 2)
