DIM x
x = 1 + (2 XOR 3
