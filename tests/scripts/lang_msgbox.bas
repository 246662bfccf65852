DIM s, x
s = "Bad"
x = NULL
MsgBox s & " data"
MsgBox x
msgbox 1 + 2 * 3 & "!"
