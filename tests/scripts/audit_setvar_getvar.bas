DIM a, b, c, d
a = SetVar("new1", 5)
b = GetVar("NEW1") + 1
c = IsVarExist("new1")
d = isvarexist("nope")
