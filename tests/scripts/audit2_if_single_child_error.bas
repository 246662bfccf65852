DIM a
If 1 Then a = nosuch
