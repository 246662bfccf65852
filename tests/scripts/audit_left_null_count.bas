DIM x
x = LEFT("abc", NULL)
