Do Until 0
End Do now
