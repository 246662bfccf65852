DIM n
If False Then
n = 1
Else ' note
n = 2
End If