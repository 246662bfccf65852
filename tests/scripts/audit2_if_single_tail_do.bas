DIM a
If 1 Then Do While 1
