DIM a, b, c
a = NULL + 5
b = NULL * 5
c = NULL - 5
