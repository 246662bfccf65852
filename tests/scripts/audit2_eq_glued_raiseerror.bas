RaiseError=1
