DIM x
x = Atn("a")
