DIM a, b
a = Input("name?")
b = Input("again", "title", "def")
