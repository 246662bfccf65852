DIM n
Do While 0
If 1 Then
n = 1
End If
Loop