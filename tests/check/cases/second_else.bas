If 1 > 0 Then
Else
Else
End If
