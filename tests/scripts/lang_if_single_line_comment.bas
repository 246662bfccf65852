DIM n
If 1 Then n = 1 ' set n