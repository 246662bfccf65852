Do While 1
Exit Do