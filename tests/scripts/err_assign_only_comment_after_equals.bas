DIM x
x = ' only a comment