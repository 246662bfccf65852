DIM n
n = NULL
RaiseError n
