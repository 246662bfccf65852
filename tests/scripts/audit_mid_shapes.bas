DIM a, b, c, d
a = MID("abcdef"，2，3)
b = MID(LEFT("abcdef", 4), 2)
c = MID( "abc" , 2 )
d = LEFT("abc", "2") & RIGHT("abc", 2.5) & CHR(65.5)
