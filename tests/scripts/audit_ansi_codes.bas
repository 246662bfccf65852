DIM a, b, c
a = ASC("中")
b = CHR(-10544)
c = LEN("中文")
