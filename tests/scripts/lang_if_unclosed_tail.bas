DIM x
If 1 Then x = "abc
