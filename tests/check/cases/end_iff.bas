If 1 > 0 Then
End Iff
