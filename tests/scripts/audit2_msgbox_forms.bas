MSGBOX	1 < 2
msgbox "it's" ' c
MsgBox NULL
MsgBox 1/4
