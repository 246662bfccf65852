MoveNext 1
