DIM a' note
