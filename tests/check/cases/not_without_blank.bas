If Not(1 > 2) Then MsgBox 1
