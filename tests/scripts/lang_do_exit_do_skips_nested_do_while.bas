DIM n
Do While 1
Exit Do
Do While 0
Loop
n = 5
Loop
n = n + 1