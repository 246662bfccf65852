DIM n
n = 1
If n = 1 Then MSGBOX "one"
If n = 2 Then MSGBOX "two"
MSGBOX n + 1
