DIM i
i = 0
Do Until i >= 3
i = i + 1
End Do
