DIM s
If s = "abc Then