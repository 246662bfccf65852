DIM x
x = NOT "a"
