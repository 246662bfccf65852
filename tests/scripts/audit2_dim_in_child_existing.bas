If 1 Then DIM a
DIM a
a = 1
If 1 Then DIM a
