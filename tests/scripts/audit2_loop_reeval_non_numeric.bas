DIM s
s = 1
Do While s
s = "abc"
Loop
