DIM a
End Loop
