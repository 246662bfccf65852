DIM a, b, c, d
a = FORMAT(1.005, "0.00")
b = FORMAT(0.075, "#.##")
c = FORMAT(5, "@ days")
d = FORMAT("Tom", "&&& has")
