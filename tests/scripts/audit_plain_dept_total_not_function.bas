DIM x
x = 部门工资合计(1)
