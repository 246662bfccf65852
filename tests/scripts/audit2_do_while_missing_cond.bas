Do While ' none
Loop
