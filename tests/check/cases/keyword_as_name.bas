Month = 3
