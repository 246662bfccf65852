DIM x
x = DAY("abc")
