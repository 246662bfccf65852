If 1 Then If 1 Then
