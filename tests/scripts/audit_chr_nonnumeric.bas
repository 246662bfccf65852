DIM x
x = CHR("a")
