DIM i, s
i = 0
s = ""
Do Until i = 3 ' stop at three
i = i + 1
s = s & i
Loop ' again
