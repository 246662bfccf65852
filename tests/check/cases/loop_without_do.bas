MsgBox 1
Loop
