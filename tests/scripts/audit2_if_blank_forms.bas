DIM thenx
thenx = 0
If thenx = 0 Then MSGBOX "a"
If 1 Then	MSGBOX "b"
If 1 Then ' block
MSGBOX "c"
End If ' done
