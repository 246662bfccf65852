DIM x
x = "abc
MSGBOX "next"
