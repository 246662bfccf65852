DIM a


a = 4
