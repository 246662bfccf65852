DIM n
Do While 1
If 1 Then
Exit Do
End If
Loop
n = 1