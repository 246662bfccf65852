DIM x
IF 1 THEN x = "a" < 1
