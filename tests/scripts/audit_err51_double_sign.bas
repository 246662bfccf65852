DIM x
x = --5
