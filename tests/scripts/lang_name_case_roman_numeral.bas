DIM ⅰ
Ⅰ = 1
MSGBOX ⅰ + 1
