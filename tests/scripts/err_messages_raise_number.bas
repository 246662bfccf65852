RaiseError 42
MsgBox 1