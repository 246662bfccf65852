' 同一行每次都重新判断名字: 先是字段, 记录移动后是新行的字段, SetVar 之后是变量
DIM i, out, ok
i = 0
out = ""
Do While i < 3
out = out & "[" & 姓名 & "]"
If i = 0 Then MoveNext
If i = 1 Then ok = SetVar("姓名", "变量")
i = i + 1
Loop
