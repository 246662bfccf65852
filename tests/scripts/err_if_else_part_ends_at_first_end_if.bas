DIM a, n
If True Then
Else
If a Then
End If
n = 1
End If