DIM x
x = NULL < "a"
