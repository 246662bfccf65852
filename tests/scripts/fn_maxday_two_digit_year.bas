DIM a, b
a = MaxDay(4, 99)
b = MaxDay(2, 96)
