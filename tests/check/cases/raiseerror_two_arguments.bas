RaiseError "a", "b"
