DIM a
If a>1Then