MsgBox "工资合计
