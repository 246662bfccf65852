DIM remark
REM x = = ( !!
  rem
	' tab comment
remark = 2 ' c
