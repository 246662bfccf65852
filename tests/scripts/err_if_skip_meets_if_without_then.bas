If False Then
If a
End If