DIM x
x = 1 + nosuch
