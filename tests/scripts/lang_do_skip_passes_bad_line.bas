Do While 0
x#y = 1
Loop
DIM z
