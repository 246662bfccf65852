DIM a
Do While 1
If 1 Then
End ' stop here
a = 1
