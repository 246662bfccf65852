DIM x
x = LEFT "abc"
