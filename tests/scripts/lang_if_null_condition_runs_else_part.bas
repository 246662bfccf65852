DIM n
If NULL Then
n = 1
Else
n = 2
End If