DIM x
x = MaxDay("abc")
