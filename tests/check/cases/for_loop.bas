For i = 1 To 10
Next
