DIM x
x = LEFT(nosuch, 1)
