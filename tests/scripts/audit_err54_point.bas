DIM x
x = .
