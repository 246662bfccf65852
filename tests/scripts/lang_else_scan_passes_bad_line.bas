If True Then
Else
x#y = 1
End If
DIM z
