Exit For
