DIM n
n = 0
Do Until n >= 0
  Do While n > 5
    n = n + 1
  Loop
  n = 2
Loop
