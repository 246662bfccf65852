RaiseError (7)
