DIM a
DIM b
DIM c
DIM d
a = 2 ^ 3 ^ 2 - -3 ^ 2
b = NULL + 5 & "|" & NULL * 5
c = INT(-2.5) + LEN(12.5)
d = "ab" + "cd" = "abcd"
