DIM x
x = ' only
