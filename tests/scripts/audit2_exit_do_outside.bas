DIM a
Exit Do
