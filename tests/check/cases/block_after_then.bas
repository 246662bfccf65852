Do While 1 > 2
If 1 > 0 Then Loop
Loop
