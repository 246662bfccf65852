Do While 0
Do While 1
Loop
MSGBOX "x"
Loop
MSGBOX "end"
