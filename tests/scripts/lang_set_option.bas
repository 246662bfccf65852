A = A + 1
