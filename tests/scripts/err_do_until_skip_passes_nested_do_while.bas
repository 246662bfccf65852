DIM n
Do Until 1
Do While 0
n = 1
Loop
n = 2
Loop