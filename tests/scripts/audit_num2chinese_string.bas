DIM x
x = 大写("abc")
