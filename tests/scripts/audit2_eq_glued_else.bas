If 1 Then
Else=1
End If
