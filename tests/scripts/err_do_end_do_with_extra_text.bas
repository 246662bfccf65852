Do While 0
End Do x