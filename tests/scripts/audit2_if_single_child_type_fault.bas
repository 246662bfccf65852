If 1 Then If "a" Then MsgBox 1
