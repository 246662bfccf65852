If True Then
Else
MSGBOX 1
