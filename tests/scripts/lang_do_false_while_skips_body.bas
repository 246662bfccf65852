DIM n
Do While 1 = 2
n = 1
Loop