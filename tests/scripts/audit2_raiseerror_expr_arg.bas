RaiseError  "a, b" & 1 + 1
