If 1 Then
End If'c
