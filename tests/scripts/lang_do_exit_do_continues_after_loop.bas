DIM n
Do While 1
Exit Do
Loop
n = 1