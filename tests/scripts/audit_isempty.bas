DIM a, b, c, d, e
a = IsEmpty("   ")
b = IsEmpty(NULL)
c = isempty(EMPTY)
d = IsEmpty(0)
e = IsEmpty("x") + 1
