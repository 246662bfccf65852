DIM a, b, c, d, e, f, g
a = FORMAT(CDATE("2023年3月15日 13:05:06"), "yyyy-mm-dd hh:nn:ss")
b = FORMAT(CDATE("下午 1:05"), "hh:nn AM/PM")
c = CDATE("3/1/2005") - CDATE("2005/2/1")
d = CDATE("2005-02-28 23:00") + 1
e = CLNG(2.5)
f = CLNG(3.5)
g = FORMAT(0, "0.00;(0.00);\零")
