DIM x
x = EXP(710)
