If 1 Then
Do While 1
MSGBOX 1
