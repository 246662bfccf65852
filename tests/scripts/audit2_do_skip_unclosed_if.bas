Do While 0
If 1 Then
Loop
End If
