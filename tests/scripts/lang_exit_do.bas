DIM n
n = 0
Do While 1
  n = n + 1
  If n >= 4 Then
    Exit Do
  End If
Loop
MSGBOX n
