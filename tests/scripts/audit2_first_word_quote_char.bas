a'b = 1
