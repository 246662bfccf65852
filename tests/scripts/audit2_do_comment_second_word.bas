Do ' While 1
