If 1 > 0 Then
Esle
End If
