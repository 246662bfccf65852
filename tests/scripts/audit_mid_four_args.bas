DIM x
x = MID("abcdef", 1, 2, 3)
