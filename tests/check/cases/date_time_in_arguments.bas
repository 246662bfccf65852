MsgBox CStr(#3/15/2005 10:30#)
