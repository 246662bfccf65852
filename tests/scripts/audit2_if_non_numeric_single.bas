DIM s
s = "abc"
If s Then MSGBOX 1
