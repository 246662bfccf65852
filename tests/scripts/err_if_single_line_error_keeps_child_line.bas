DIM n
If 1 Then y = 1