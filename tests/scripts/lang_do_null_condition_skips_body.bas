DIM n
Do While NULL
n = 1
Loop