DIM a
If 1 Then If 2 > 1 Then a = "x then y"
