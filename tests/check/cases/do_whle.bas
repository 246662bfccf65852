Do Whle 1 > 2
Loop
