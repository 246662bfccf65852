RaiseError 1，2
