DIM i, x
i = 0
Do While i < 3
x = 10 / (1 - i)
i = i + 1
Loop
