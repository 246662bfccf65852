If 0 Then
For i = 1 To 3
End If
