DIM a
a = 1
a = a + nosuch
