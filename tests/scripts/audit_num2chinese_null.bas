DIM x
x = 大写(NULL)
