If False Then
n = 1