For i = 1 To 3
