DIM i
Do Until(i > 1)
Loop
