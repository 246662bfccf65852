DIM n
If False Then
If True Then
n = 1
End If
Else
n = 2
End If