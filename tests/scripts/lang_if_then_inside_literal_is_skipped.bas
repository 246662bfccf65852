DIM s, n
s = "x"
If s <> " THEN " Then n = 1