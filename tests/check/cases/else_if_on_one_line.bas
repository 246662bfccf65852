If 1 > 0 Then
Else If 2 > 1 Then
End If
