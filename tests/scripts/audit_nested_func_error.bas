DIM x
x = LEFT(LEFT("a"), 1)
