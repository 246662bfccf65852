DIM x
x = (1 XOR 2)
