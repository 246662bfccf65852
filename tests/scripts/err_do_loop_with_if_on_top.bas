Do While 1
If 1 Then
Loop