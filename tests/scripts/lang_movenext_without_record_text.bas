MoveNext x
