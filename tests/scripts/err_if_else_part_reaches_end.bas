If True Then
Else
n = 1