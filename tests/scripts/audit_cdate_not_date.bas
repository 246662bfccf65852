DIM x
x = CDate("abc")
