DIM a
 a	= 1
