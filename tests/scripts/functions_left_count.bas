DIM x
x = Left("abc")
