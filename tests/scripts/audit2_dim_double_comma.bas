DIM a,,b
