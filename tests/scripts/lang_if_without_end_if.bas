DIM a
If 1 > 0 Then
a = 1
