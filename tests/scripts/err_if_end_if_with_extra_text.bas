If True Then
End If x