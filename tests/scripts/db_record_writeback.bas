' 当前记录: 字段当变量读写, 赋值写回数据库, 移动
DIM 合计
合计 = 基本工资 + 0
基本工资 = 基本工资 + 100
MoveNext
入职日期 = "2005-5-6"
MoveLast
MSGBOX 姓名 & " " & 在职
MSGBOX DoSQL("select group_concat(工号 || ':' || ifnull(基本工资, '-') || ':' || 入职日期, ' ') from 工资表2005年03月")
