DIM x
x = Exp("abc")
