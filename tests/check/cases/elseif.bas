If 1 > 0 Then
ElseIf 2 > 1 Then
End If
