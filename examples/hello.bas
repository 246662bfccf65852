' A first KORVEX script: a piece-rate wage with a cap, and a loop.
DIM 件数, 单价, 工资, 说明, 周
件数 = 120
单价 = 2.5
工资 = 件数 * 单价
If 工资 > 250 Then
  说明 = "封顶"
  工资 = 250
Else
  说明 = "照发"
End If
周 = 0
Do While 周 < 4
  周 = 周 + 1
Loop
MSGBOX "工资: " & 工资 & " (" & 说明 & "), " & 周 & " 周"
