DIM x
x = UBound(5)
