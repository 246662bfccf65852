' 车间奖金: 生产车间 (部门编号以 01 开头) 按本车间计件工资总额的 2% 人均分配;
' 主打产品男式衬衫完工件数多于上月、全厂产值也高于上月时, 每人另发 100 元。
If Not IsVarExist("月初") Then Dim 月初, 月末
If Not IsVarExist("上年") Then Dim 上年, 上月
If Not IsVarExist("人数") Then Dim 人数
月初 = CDate(年 & "-" & 月 & "-1")
月末 = CDate(年 & "-" & 月 & "-" & MaxDay(月, 年))
上年 = 年
上月 = 月 - 1
If 上月 = 0 Then 上年 = 年 - 1
If 上月 = 0 Then 上月 = 12
车间奖金 = 0
人数 = _员工人数(部门编号, False, False)
If Left(部门编号, 2) = "01" And 人数 > 0 Then
  车间奖金 = Round(_部门计件工资额(月初, 月末, 部门编号) * 0.02 / 人数, 2)
  If _产品产量(年, 月, "男式衬衫") > _产品产量(上年, 上月, "男式衬衫") And _产品产值(年, 月) > _产品产值(上年, 上月) Then
    车间奖金 = 车间奖金 + 100
  End If
End If
