DIM x
x = LEN("a" "b")
