DIM s, n
s = "-1"
n = 0
If s Then
n = n + 1
Else
n = n + 10
End If
