DIM d
d = #2005-01-01#
If d Then MSGBOX "d"
