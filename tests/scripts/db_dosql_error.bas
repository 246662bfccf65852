DIM n
n = DoSQL("select count(*) from WA_JobData where 日期 BETWEEN '03/01/2005' and '03/31/2005'")
n = n + DoSQL("select year(日期) from WA_JobData where 工号 = '002'") + _员工工资项目值(2005, 3, "002", "基本工资", 0)
MSGBOX n
MSGBOX DoSQL("select 工资合计 from WA_JobData where 日期 = '04/31/2005' and")
