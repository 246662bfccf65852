DIM s
s = "Bad data"
RaiseError s