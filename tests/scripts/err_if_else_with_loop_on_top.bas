Do While 1
Else