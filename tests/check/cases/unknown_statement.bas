a 5
