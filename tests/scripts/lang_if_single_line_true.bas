DIM a, b
a = 5
If a > 1 Then b = 2