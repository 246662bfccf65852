DIM x
x = "a then b"
If x = "a then b" Then MSGBOX "eq"
If "Then " = x Then MSGBOX "ne"
