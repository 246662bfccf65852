DIM a
a = DoSqlEx("select 产品名称, sum(计件数量) as 件数 from WA_JobData group by 产品名称 order by 产品名称", TRUE)
