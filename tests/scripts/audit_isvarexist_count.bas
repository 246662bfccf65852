DIM x
x = IsVarExist()
