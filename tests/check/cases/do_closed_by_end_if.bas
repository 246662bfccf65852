If 1 > 0 Then
Do While 1 > 2
End If
