If 0 Then
Do Until 1
End If
