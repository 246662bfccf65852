DIM n, x
n = NULL
Do While n
MSGBOX 1
Loop
Do While x
MSGBOX 2
Loop
Do Until n
n = 3
Loop
