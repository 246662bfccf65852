RaiseError(5)
