DIM a, DIM b
dim c ' note
DIM x, DIM
