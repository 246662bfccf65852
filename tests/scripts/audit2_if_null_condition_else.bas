DIM n
n = NULL
If n Then
MSGBOX 1
Else ' other
MSGBOX 2
end if
