DIM x
x = GetVar("é")
