DIM x
x = CLng("abc")
