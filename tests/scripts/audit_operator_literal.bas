DIM a, b
a = "+"
b = "x" + "AND" + "<="
