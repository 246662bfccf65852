DIM c
If False Then
Do While c
Loop
End If