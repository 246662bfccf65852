DIM a, b, c, d
a = YEAR(DATE()) > 2000
b = TIME() < 1
c = WeekDayName(#2005-03-13#)
d = Round("2.5")
