  RaiseError a,
