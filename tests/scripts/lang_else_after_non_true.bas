DIM x, r
x = 5
If x Then
r = r & "T"
Else
r = r & "E"
End If
