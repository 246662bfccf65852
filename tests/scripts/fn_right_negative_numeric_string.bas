DIM x
x = RIGHT("abc", " -2 ")
