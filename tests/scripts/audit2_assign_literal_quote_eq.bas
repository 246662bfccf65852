DIM x, y, z
x = "a'b=c" & "'" ' tail
y=1=2
	Z  =  3
x = x & 1
