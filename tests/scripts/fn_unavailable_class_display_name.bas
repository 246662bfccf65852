DIM x
x = getcell("A")
