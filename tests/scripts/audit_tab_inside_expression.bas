DIM x
x = 1 +	2
