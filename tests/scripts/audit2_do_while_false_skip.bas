DIM i
i = 5
Do While i < 3
MSGBOX i
Loop
MSGBOX "after"
