DIM x
x = "it's" ' note