DIM a, b
a = EXP(0)
b = Exp(709.782712893) > 1
