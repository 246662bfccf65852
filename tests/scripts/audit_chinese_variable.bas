DIM 工资, 大写金额
工资 = 12.5
大写金额 = num2chinese(工资 * 2)
