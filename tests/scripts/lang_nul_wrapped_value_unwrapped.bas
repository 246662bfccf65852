DIM s, t, n
s = Chr(0) & "and" & Chr(0)
t = s
n = Len(s)
