If True Then
Else x = 1
End If