' String building: append a character, keep the text bounded, take pieces
' of it and count.
Dim i, s, t, n, c
i = 0
s = ""
n = 0
Do While i < 200000
  c = Mid("abcdefghij", i - Int(i / 10) * 10 + 1, 1)
  s = s & c
  If Len(s) > 40 Then
    s = Mid(s, 11)
  End If
  t = UCase(Left(s, 5)) & Right(s, 2)
  n = n + Len(t)
  i = i + 1
Loop
