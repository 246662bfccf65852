RaiseError ()
