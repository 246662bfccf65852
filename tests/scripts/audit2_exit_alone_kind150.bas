Exit
