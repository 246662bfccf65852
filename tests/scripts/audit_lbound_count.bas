DIM x
x = LBound()
