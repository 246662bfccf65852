DIM x
x = LEFT("abc", "-1")
