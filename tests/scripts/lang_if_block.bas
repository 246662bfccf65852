DIM x, r, s
x = 5
If x > 1 Then
  r = "big"
Else
  r = "small"
End If
If x < 1 Then s = "neg"
If x = 5 Then s = "five"
