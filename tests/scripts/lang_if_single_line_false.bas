DIM a, b
a = 0
If a > 1 Then b = 2