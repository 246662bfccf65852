Do While 0
End If
Loop