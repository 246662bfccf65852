RaiseError "Bad data"
