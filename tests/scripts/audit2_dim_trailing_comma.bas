DIM a,
