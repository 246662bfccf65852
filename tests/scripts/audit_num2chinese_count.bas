DIM x
x = 大写(1, 2)
