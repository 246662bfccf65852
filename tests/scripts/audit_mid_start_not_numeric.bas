DIM x
x = MID("abc", "x")
