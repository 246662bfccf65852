Dim a
If 1 > 0 Then a = 1 Else a = 2
