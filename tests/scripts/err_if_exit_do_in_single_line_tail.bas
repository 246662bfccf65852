DIM n
n = 0
Do While 1
  n = n + 1
  If n >= 2 Then Exit Do
Loop