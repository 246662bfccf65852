DIM a
MoveLast ' go
a = 1
