a#b = 1
