DIM a
a = 1 XOR 2
