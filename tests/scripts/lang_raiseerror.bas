DIM s
s = "Bad data"
RaiseError s
MSGBOX "not shown"
