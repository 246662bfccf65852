If=1 Then
