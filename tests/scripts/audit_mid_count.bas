DIM x
x = MID("abc")
