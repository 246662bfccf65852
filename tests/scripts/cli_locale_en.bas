DIM a
a = WeekDayName(#2005-03-14#)
MSGBOX #2005-03-01#
