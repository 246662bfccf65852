DIM x
x = MaxDay(1, 2, 3)
