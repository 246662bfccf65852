DIM x
x = GetVar("nope")
