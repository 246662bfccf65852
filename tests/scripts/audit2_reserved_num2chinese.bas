DIM a
num2chinese = 1
