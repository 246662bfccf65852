DIM x
x = 7
x = 1 XOR 2