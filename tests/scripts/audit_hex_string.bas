DIM x
x = HEX("abc")
