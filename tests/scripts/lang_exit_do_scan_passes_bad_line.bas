Do While 1
Exit Do
x#y = 1
Loop
DIM z
