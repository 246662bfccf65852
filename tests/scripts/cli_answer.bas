DIM a, b, c
a = Input("金额")
b = Input("second", "title", "def")
c = Input("third", "t", "def")
