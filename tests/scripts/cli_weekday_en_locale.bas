DIM a
a = WeekDayName(#2005-03-14#)
