Do While 0
Loop While x