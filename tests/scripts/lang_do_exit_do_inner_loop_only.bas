DIM n
n = 0
Do While n < 2
n = n + 1
Do While 1
Exit Do
Loop
Loop