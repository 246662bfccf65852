DIM a, b, c, d, e, f, g
a = MONTH(#2005-03-15#)
b = DAY(#2005-03-15#)
c = HOUR(CDate("2005-03-15 13:45:00"))
d = Minute(CDate("2005-03-15 13:45:00"))
e = MaxDay(#2004-02-10#)
f = MaxDay(2, 2005)
g = WeekDayName(#2005-03-14#)
