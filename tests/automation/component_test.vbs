' What the shared cases cannot show about the component. Texts with Chinese,
' read by T(KEY):
'@ jobNo=工号|name=姓名|base=基本工资|zhang=张三|li=李四|wang=王五|sheet2=二月|chinese=中文|moveNext=下移指针|piece=_计件工资额
'@ item=_员工工资项目值|pieceSql=SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (YEAR(日期) = 2005) AND (MONTH(日期) = 3)  AND 工号='001'
'@ total=合计|itemSql3=select [基本工资] as WA_Value from [工资表2005年03月] Where (工号 = '002')|itemSql4=select [基本工资] as WA_Value from [工资表2005年04月] Where (工号 = '002')
'@ noBook=没有有效的Excel工作簿对象实例

Function NewEngine(): Set NewEngine = CreateObject("Morlan.BasicEngine"): End Function

' Runs lines (Wine's VBScript has no Join); errors: ErrNum expected, Empty for 0.
Sub Run(e, parts, errors)
  Dim p, text
  For Each p In parts
    If Not IsEmpty(text) Then text = text & vbCrLf
    text = text & p
  Next
  e.CodeBlock = text: e.Execute
  If IsEmpty(errors) Then Num "ErrNum running " & parts(0), e.ErrNum, 0
End Sub

' pairs: a variable's name, its expected value, the next name...
Sub Vars(e, pairs)
  Dim i
  For i = 0 To UBound(pairs) Step 2: Expect "variable " & pairs(i), e.GetVarValue(pairs(i)), pairs(i + 1): Next
End Sub

Function Table(columns, values)
  Dim g, i
  g = Array(0): ReDim g((UBound(values) + 1) \ columns - 1, columns - 1)
  For i = 0 To UBound(values): g(i \ columns, i Mod columns) = values(i): Next
  Table = g
End Function

Function PayrollRecord()
  Set PayrollRecord = NewRecordSet(Array(T("jobNo"), T("name"), T("base"), "Code"), Array("String", "String", "Currency", "String"), _
    Array(Array("001", T("zhang"), CCur(3000.5), "a1"), Array("0012", T("wang"), CCur(100), "b2"), Array("002", T("li"), CCur(2800), "c3")))
End Function

Sub TestCreation()
  Dim e
  Set e = CreateObject("Morlan.BasicEngine.1")
  Expect "a new engine's ErrNum, ErrMsg, IfCount, StmtFlagCount", Array(e.ErrNum, e.ErrMsg, e.IfCount, e.StmtFlagCount), _
    List(Array(CLng(0), "", 0, 0))
  e.Language = 2052
  Run e, Array("DIM a"), Empty
  Expect "Language; CurrentLineNum and CodeBlock (its line break added) after a run", _
    Array(e.Language, e.CurrentLineNum, e.CodeBlock), List(Array(CLng(2052), 2, "DIM a" & vbCrLf))
End Sub

Class BrokenParent
  Public Property Get Connect(): Err.Raise 1234, "BrokenParent", "no connection": End Property
End Class

' Execute reports every failure in ErrNum and ErrMsg and raises nothing.
Sub TestExecuteNeverRaises()
  Dim c, e, rs, raised, piece
  Set rs = PayrollRecord()
  rs.MoveLast: rs.MoveNext
  piece = "x = " & T("piece") & "(2005, 3, ""001"")"
  ' what the host set up (Parent, RecordSet), the script, the ErrNum (Empty: any)
  For Each c In Array(Array("a syntax error", Nothing, Nothing, "x = (1 +", Empty), _
      Array("a Parent without Connect", CreateObject("Scripting.Dictionary"), Nothing, piece, 438), _
      Array("a Parent whose Connect fails", New BrokenParent, Nothing, piece, 1234), _
      Array("a move past the end of the record", Nothing, rs, "MoveNext", 102), Array("no record", Nothing, Nothing, "MoveFirst", 102))
    Set e = NewEngine()
    If Not c(1) Is Nothing Then Set e.Parent = c(1)
    If Not c(2) Is Nothing Then Set e.RecordSet = c(2)
    e.CodeBlock = c(3)
    On Error Resume Next: e.Execute
    raised = Err.Number: On Error GoTo 0
    If IsEmpty(c(4)) Then c(4) = e.ErrNum
    Check "Execute with " & c(0) & " gives ErrNum " & c(4) & " and a message on line 1, raising nothing", raised = 0 And _
      e.ErrNum = c(4) And e.ErrNum <> 0 And e.ErrMsg <> "" And e.CurrentLineNum = 1, raised & " " & e.ErrNum & " " & e.ErrMsg
  Next

  ' A stale error fails the next run at once; cleared by the host, it does not.
  Run e, Array("x = (1 +"), 1
  Run e, Array("DIM a", "a = 1"), 1
  Expect "a stale error ends the next run on line 1", Array(e.ErrNum, e.CurrentLineNum), List(Array(CLng(-2147220004), 1))
  e.ErrNum = 0: e.ErrMsg = ""
  Run e, Array("DIM a", "a = 1"), Empty
  Vars e, Array("A", CDbl(1))
End Sub

Sub TestVariants()
  Dim e, d, grid, values, i, v, name, got
  Set d = CreateObject("Scripting.Dictionary"): d.Add "k", 42
  Set e = NewEngine()
  grid = Table(2, Array(CInt(1), T("chinese"), CCur(2.5), Null, MakeDate(2005, 3, 1, 0, 0, 0), True))
  values = Array("A_INT", CInt(-12), "A_LNG", CLng(70000), "A_DBL", CDbl(2.5), "A_CUR", CCur(3000.5), "A_STR", T("chinese"), _
    "A_DATE", MakeDate(2005, 3, 1, 13, 5, 0), "A_BOOL", True, "A_NULL", Null, "A_EMPTY", Empty, "GRID", _
    Array(Array(0, 0), Array(Array(CInt(1), T("chinese")), Array(CCur(2.5), Null), Array(grid(2, 0), True))))
  ' Names and values go in as variables (by reference), as hosts pass them.
  For i = 0 To UBound(values) Step 2
    name = values(i): v = values(i + 1)
    If name = "GRID" Then v = grid
    e.SetSysVar name, v
  Next
  Vars e, values
  name = "A_OBJ"
  e.SetSysVar name, d
  Set got = e.GetVarValue(name)
  Check "GetVarValue(A_OBJ) is the host's object, which works", got Is d And got.Item("k") = 42, Describe(got)

  Run e, Array("DIM s, c, t, b, k", "s = A_STR & A_INT", "c = A_CUR * 2", "t = A_DATE + 1", "b = NOT A_BOOL", _
    "k = LBound(GRID, 2) & "","" & UBound(GRID) & "","" & UBound(GRID, 2)"), Empty
  Vars e, Array("S", T("chinese") & "-12", "C", CDbl(6001), "T", MakeDate(2005, 3, 2, 13, 5, 0), "B", False, "K", "0,2,1")
  v = CLng(5): name = "A_LNG"
  e.Vaule name, v
  Vars e, Array("A_LNG", CLng(5))
  got = e.GetVarValue("NO_SUCH")
  Num "GetVarValue of an unknown name reports error 5", e.ErrNum, 5
End Sub

Sub TestLines()
  Dim e, kinds, k
  Set e = NewEngine()
  e.CodeBlock = "DIM a" & vbCrLf & "a = 1" & vbLf & vbCr & "IF a = 1 THEN" & vbCr & "END IF": e.Execute
  Num "LineCount over LF CR counts the empty line between", e.LineCount, 5
  Expect "ErrNum, GetLineCode(2, 3, 5)", Array(e.ErrNum, e.GetLineCode(2), e.GetLineCode(3), e.GetLineCode(5)), _
    List(Array(CLng(0), "a = 1", "", "END IF"))
  ' The kinds themselves are the engine's own tests'; here they cross the interface.
  kinds = Array("DIM x", 101, "  if a then", 103, T("moveNext"), 116, "", 145, "End Loop", 150)
  For k = 0 To UBound(kinds) Step 2
    Expect "WhatSTMT(""" & kinds(k) & """)", e.WhatSTMT(kinds(k)), CInt(kinds(k + 1))
  Next
  k = e.WhatSTMT("For i = 1 To 3")
  Num "WhatSTMT of a line starting with a reserved word sets error 23", e.ErrNum, 23
End Sub

Sub Counters(what, e, expected)
  Expect what, Array(e.IfCount, e.ForCount, e.DoCount, e.StmtFlagCount), List(expected)
End Sub

Sub TestStatementFlags()
  Dim e, top
  Set e = NewEngine()
  e.PushStmtFlag Array("If", 3, True)
  e.PushStmtFlag Array("Do While", 7, "i < 3")
  Expect "GetpopValueStmtFlag gives the top entry, leaving it", Array(e.GetpopValueStmtFlag, e.StmtFlagCount), _
    List(Array(List(Array("Do While", 7, "i < 3")), 2))
  top = Array(e.PopStmtFlag, e.PopStmtFlag, e.StmtFlagCount)
  Expect "PopStmtFlag gives the entries from the top", Array(top(0)(0), top(1)(0), top(2)), List(Array("Do While", "If", 0))
  top = e.PopStmtFlag
  Check "PopStmtFlag on an empty stack gives Empty and error 18", IsEmpty(top) And e.ErrNum = 18, Describe(top) & " " & e.ErrNum

  ' A run failing inside a block leaves it open for the host to see.
  Set e = NewEngine()
  Run e, Array("DIM i", "IF 1 = 1 THEN", "i = (", "END IF"), 1
  Num "a run failing inside IF stops on its line", e.CurrentLineNum, 3
  Counters "the IF left open", e, Array(1, 0, 0, 1)

  ' The counters are the host's to set; END clears all but the FOR counter.
  Set e = NewEngine()
  e.IfCount = 2: e.ForCount = 1: e.DoCount = 3
  e.PushStmtFlag Array("If", 1, True)
  Counters "the counters as the host set them", e, Array(2, 1, 3, 1)
  Run e, Array("END"), Empty
  Counters "the counters after END", e, Array(0, 1, 0, 0)
End Sub

Sub TestRecord()
  Dim e, rs, got
  Set e = NewEngine(): Set rs = PayrollRecord(): Set e.RecordSet = rs
  Expect "isFieldName (any case), isFieldNameByArr, GetFieldValue by name and by position", Array(e.isFieldName(T("jobNo")), _
    e.isFieldName("cODE"), e.isFieldName("nope"), e.isFieldNameByArr("code"), e.isFieldNameByArr("nope"), _
    e.GetFieldValue(T("name")), e.GetFieldValue(2)), List(Array(True, True, False, True, False, T("zhang"), CCur(3000.5)))

  Run e, Array("DIM s, n", "s = 0", "n = """"", "DO WHILE NOT EOF", "s = s + " & T("base"), _
    "n = n & " & T("jobNo") & " & "" """, "MoveNext", "LOOP"), Empty
  Vars e, Array("S", CCur(5900.5), "N", "001 0012 002 ")
  got = rs.EOF & e.EOF & e.MoveFirst & rs.AbsolutePosition & e.BOF & e.MoveLast & rs.AbsolutePosition & e.MovePrevious & rs.AbsolutePosition
  Check "EOF at the end, MoveFirst, BOF, MoveLast, MovePrevious move the host's record set", got = "TrueTrueTrue1FalseTrue3True2", got

  Expect "ChangeField edits and updates the field of the current row", Array(e.ChangeField(T("base"), 10), rs.Written.Keys, _
    rs.Written.Items, rs.Calls), List(Array(True, List(Array(T("base"))), List(Array(CCur(10))), "Edit Update "))
  Run e, Array("MoveFirst", T("base") & " = " & T("base") & " + 1", "Code = ""x"""), Empty
  Expect "the script's assignments reach the record set, each updated", Array(rs.Written.Keys, rs.Written.Items, rs.Calls), _
    List(Array(List(Array(T("base"), "Code")), List(Array(CCur(3001.5), "x")), "Edit Update Edit Update Edit Update "))

  rs.MoveLast: rs.MoveNext
  Check "MoveNext past the end gives False and error 102", Not e.MoveNext And e.ErrNum = 102, e.ErrNum
  e.ErrNum = 0: Set e.RecordSet = Nothing
  Check "isFieldName without a record", Not e.isFieldName(T("jobNo")), "True"
End Sub

Sub TestCells()
  Dim e, book, grid
  Set e = NewEngine(): Set book = New StandInWorkbook
  book.SheetNames = Array("Sheet1", T("sheet2"))
  Set e.ExcelBook = book
  Set e.ActiveExcelSheet = book.Worksheets.Item(2)
  grid = Table(2, Array(1, Empty, 2, Empty, Empty, Empty))
  e.SetSysVar "GRID", grid
  Run e, Array("DIM r, v", "r = SETCELL(""C"", 5, 3.5)", "r = SETCELL(""AA"", 1, ""x"", ""Sheet1"")", "r = SETCELL(""ZZ"", 3, 1, 2)", _
    "r = SetCellFormula(""D"", 5, ""=C5*1.1"", 1)", "r = SETCELL(""A"", 1, GRID, 1)", "v = GETCELL(""C"", 5)"), Empty
  Expect "the cells written, on the active sheet when none is named", book.Writes.Items, List(Array(T("sheet2") & "!5,3 value Double 3.5", _
    "Sheet1!1,27 value String ""x""", T("sheet2") & "!3,702 value Double 1", "Sheet1!5,4 formula =C5*1.1", _
    "Sheet1!1,1 2x1 value " & Describe(grid)))
  Vars e, Array("V", CDbl(3.5))

  Set e = NewEngine()
  Run e, Array("DIM v", "v = GETCELL(""A"", 1)"), 1003
  Check "GETCELL without a workbook: error 1003, saying so", e.ErrNum = 1003 And InStr(e.ErrMsg, T("noBook")) > 0, e.ErrNum & e.ErrMsg
End Sub

Sub TestWageFunctions()
  Dim e, conn
  Set e = NewEngine(): Set conn = New StandInConnection
  conn.Answer T("pieceSql"), Array(T("total")), Array("Long"), Array(Array(CLng(230)))
  conn.Answer T("itemSql3"), Array("WA_Value"), Array("Currency"), Array(Array(CCur(2800)))
  Set e.Parent = conn
  Run e, Array("DIM a, b, c", "a = " & T("piece") & "(2005, 3, ""001"")", "b = " & T("item") & "(2005, 3, ""002"", """ & _
    T("base") & """, 0)", "c = " & T("item") & "(2005, 4, ""002"", """ & T("base") & """, -1)"), Empty
  Expect "the SQL texts the connection received", conn.Received.Items, List(Array(T("pieceSql"), T("itemSql3"), T("itemSql4")))
  Vars e, Array("A", CDbl(230), "B", CCur(2800), "C", CDbl(-1))
End Sub

Sub TestUserInterface()
  Dim e, ui
  Set e = NewEngine(): Set ui = NewUserInterface(Array("abc")): Set e.UserInterface = ui
  Run e, Array("DIM x, y", "MSGBOX """ & T("chinese") & """", "x = Input(""p"", ""t"", ""d"")", "y = Input(""q"")"), Empty
  Expect "MSGBOX and Input reach the host's boxes", Array(ui.Messages.Items, ui.Buttons.Items, ui.Prompts.Items), _
    List(Array(List(Array(T("chinese"))), List(Array(CLng(0))), List(Array("p", "q"))))
  Vars e, Array("X", "abc", "Y", "")
  Set e = NewEngine(): e.Unattended = True
  Run e, Array("DIM y", "MSGBOX 1", "y = Input(""q"")"), Empty
  Vars e, Array("Y", "")
End Sub

Sub TestTwoEngines()
  Dim e1, e2
  Set e1 = NewEngine(): Set e2 = NewEngine()
  e1.SetSysVar "A", 1
  Run e2, Array("DIM A, B", "A = 2", "B = 3"), Empty
  Run e1, Array("A = A + 10"), Empty
  Expect "each engine keeps its A; B is the second's alone", Array(e1.GetVarValue("A"), e2.GetVarValue("A"), _
    e1.IsVarDefined("B")), List(Array(CDbl(11), CDbl(2), False))
End Sub

OpenChecks
On Error Resume Next
TestCreation: CheckNoError "creation"
TestExecuteNeverRaises: CheckNoError "Execute never raises"
TestVariants: CheckNoError "variants"
TestLines: CheckNoError "lines"
TestStatementFlags: CheckNoError "statement flags"
TestRecord: CheckNoError "record"
TestCells: CheckNoError "cells"
TestWageFunctions: CheckNoError "wage functions"
TestUserInterface: CheckNoError "user interface"
TestTwoEngines: CheckNoError "two engines"
FinishChecks "component tests"
