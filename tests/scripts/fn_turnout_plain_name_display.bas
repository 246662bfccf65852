DIM x
x = 产品产量(1)
