DIM a b
