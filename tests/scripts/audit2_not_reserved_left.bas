Left = 1
