DIM 名
名 = 2
