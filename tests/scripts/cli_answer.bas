DIM a, b, c
a = Input("金额")
b = Input("second")
c = Input("third")
