Dim i, s, t
i = 0
s = 0
t = ""
Do While i < 1000000
s = s + i * 2
If s > 1000000000 Then
s = s - 1000000000
End If
t = Left("abcdef", 3)
i = i + 1
Loop
