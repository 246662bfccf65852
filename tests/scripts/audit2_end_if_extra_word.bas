If 1 Then
End If x
