Dim 表, x ' DIM 了的名称可以跟括号
If Year(#3/15/2005 10:30#) > 0 And Len(表(1)) Then x = SetVar("总额", 5)
MsgBox 总额 & Left("（全角）", 1) ' 注释里的全角：不算
REM 全角，也不算
