Loop
