RaiseError 
