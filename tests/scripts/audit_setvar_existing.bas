DIM a, 金额
a = 1
金额 = SetVar("a", 9) AND GetVar("a") = 9
