DIM a
If 1 Then 1x = 2
