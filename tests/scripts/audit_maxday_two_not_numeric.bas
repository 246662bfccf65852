DIM x
x = MaxDay("x", 2005)
