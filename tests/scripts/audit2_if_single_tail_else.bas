If 1 Then Else
