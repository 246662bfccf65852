DIM a, b
a = "1" + 2
b = "ab" + "cd"
