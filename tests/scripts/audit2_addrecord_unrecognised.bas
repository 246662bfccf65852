DIM a
AddRecord
