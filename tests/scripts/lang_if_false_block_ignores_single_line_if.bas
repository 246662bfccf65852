DIM n
If False Then
If 1 Then n = 5
Else
n = 2
End If