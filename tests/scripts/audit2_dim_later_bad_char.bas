DIM x, ab-c
