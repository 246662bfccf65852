DIM x
x = nosuch + 1
