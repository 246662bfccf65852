If False Then
If a
