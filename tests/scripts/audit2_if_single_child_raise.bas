If 1 > 0 Then RaiseError "boom"
