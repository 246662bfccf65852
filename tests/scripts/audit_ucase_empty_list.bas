DIM x
x = UCase()
