DIM order, andy, notx, xory, x
order = 1
andy = 2
notx = 3
xory = 4
x = order + andy * notx - xory
