Do While 1
Do While 1
Exit Do
Loop
MSGBOX "inner done"
Exit Do
Do Until 1
Loop
Loop
MSGBOX "end"
