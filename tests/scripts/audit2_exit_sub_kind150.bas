Exit Sub
