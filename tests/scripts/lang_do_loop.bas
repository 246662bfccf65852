DIM i, s
i = 0
s = ""
Do While i < 3
  i = i + 1
  s = s & i
Loop
Do Until i >= 6
  i = i + 1
End Do
