DIM c
If False Then
Do Until c
Loop
End If