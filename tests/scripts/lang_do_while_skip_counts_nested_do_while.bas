DIM n
Do While 0
Do While 0
n = 1
Loop
n = 2
Loop