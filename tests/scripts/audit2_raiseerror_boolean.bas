raiseerror 1 = 1
