DIM a
If a>1Then
End If
