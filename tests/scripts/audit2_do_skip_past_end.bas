Do While 0
MSGBOX 1
