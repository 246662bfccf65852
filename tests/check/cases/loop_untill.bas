Do While 1 > 2
Loop Untill 1 > 2
