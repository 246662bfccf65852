DIM s
s = "abc"
Do While s
Loop