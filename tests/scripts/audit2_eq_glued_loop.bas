Do While 1
Loop=1
