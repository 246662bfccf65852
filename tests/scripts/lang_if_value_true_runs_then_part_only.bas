DIM x, n
x = 1 = 1
n = 0
If x Then
n = n + 1
Else
n = n + 10
End If