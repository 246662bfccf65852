DIM x
x = LEFT(CHR(0) & "+" & CHR(0), 3)
