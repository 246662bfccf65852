DIM a
Do
