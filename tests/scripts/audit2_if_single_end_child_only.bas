DIM a
If 1 Then End
a = 1
