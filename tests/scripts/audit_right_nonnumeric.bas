DIM x
x = Right("abc", "z")
