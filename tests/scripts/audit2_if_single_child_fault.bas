DIM n
n = NULL
If 1 Then RaiseError n
