DIM x
x = SetVar("a")
