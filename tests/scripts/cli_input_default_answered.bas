DIM a
a = Input("p", "t", "d") & "!"
