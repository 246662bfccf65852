Do While 0
If a
Loop
DIM z
