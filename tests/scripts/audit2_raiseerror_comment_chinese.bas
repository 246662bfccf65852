RaiseError "工资错误" ' note
