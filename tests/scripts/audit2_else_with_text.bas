If 0 Then
Else x = 1
End If
