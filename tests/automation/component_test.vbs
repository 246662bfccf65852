' What the shared script cases cannot show about the automation component:
' its own members, values in both directions, the host's objects as the
' engine calls them, where message boxes go, and two engines side by side.
' Run by run.sh after checks.vbs and stand_ins.vbs.
'
' Texts with Chinese in them, read by T(KEY) (run.sh turns these lines into
' component.strings):
'@ jobNo 工号
'@ name 姓名
'@ base 基本工资
'@ zhang 张三
'@ li 李四
'@ wang 王五
'@ sheet2 二月
'@ chinese 中文
'@ moveNext 下移指针
'@ piece _计件工资额
'@ item _员工工资项目值
'@ pieceSql SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (YEAR(日期) = 2005) AND (MONTH(日期) = 3)  AND 工号='001'
'@ total 合计
'@ itemSql3 select [基本工资] as WA_Value from [工资表2005年03月] Where (工号 = '002')
'@ itemSql4 select [基本工资] as WA_Value from [工资表2005年04月] Where (工号 = '002')
'@ noBook 没有有效的Excel工作簿对象实例

' The lines of a script (Wine's VBScript has no Join).
Function Lines(parts)
  Dim p, text
  For Each p In parts
    If Not IsEmpty(text) Then text = text & vbCrLf
    text = text & p
  Next
  Lines = text
End Function

Function NewEngine()
  Set NewEngine = CreateObject("Morlan.BasicEngine")
End Function

' Three employees of March, as the payroll tables hold them.
Function PayrollRecord()
  Set PayrollRecord = NewRecordSet(Array(T("jobNo"), T("name"), T("base"), "Code"), _
    Array("String", "String", "Currency", "String"), Array( _
      Array("001", T("zhang"), CCur(3000.5), "a1"), _
      Array("0012", T("wang"), CCur(100), "b2"), _
      Array("002", T("li"), CCur(2800), "c3")))
End Function

Sub TestCreation()
  Dim e, versioned
  Set e = NewEngine()
  Set versioned = CreateObject("Morlan.BasicEngine.1")
  Check "the versioned ProgID creates an engine", IsObject(versioned), TypeName(versioned)
  CheckEqual "ErrNum of a new engine", e.ErrNum, CLng(0)
  CheckEqual "ErrMsg of a new engine", e.ErrMsg, ""
  CheckEqual "IfCount of a new engine", e.IfCount, CInt(0)
  e.Language = 2052
  CheckEqual "Language keeps what the host set", e.Language, CLng(2052)
  e.CodeBlock = "DIM a"
  e.Execute
  CheckEqual "CurrentLineNum after a run", e.CurrentLineNum, CInt(2)
  CheckEqual "CodeBlock keeps the line break the run added", e.CodeBlock, "DIM a" & vbCrLf
End Sub

' A parent whose Connect fails when read.
Class BrokenParent
  Public Property Get Connect()
    Err.Raise 1234, "BrokenParent", "no connection"
  End Property
End Class

' Execute reports every failure in ErrNum and ErrMsg and raises nothing.
Sub TestExecuteNeverRaises()
  Dim cases, c, e, rs
  Set rs = PayrollRecord()
  rs.MoveLast
  rs.MoveNext
  ' what the host set up, the script, the ErrNum expected (Empty: any)
  cases = Array( _
    Array("a syntax error", Nothing, Nothing, "x = (1 +", Empty), _
    Array("a Parent without Connect", CreateObject("Scripting.Dictionary"), Nothing, "x = " & T("piece") & "(2005, 3, ""001"")", 438), _
    Array("a Parent whose Connect fails", New BrokenParent, Nothing, "x = " & T("piece") & "(2005, 3, ""001"")", 1234), _
    Array("a move past the end of the record", Nothing, rs, "MoveNext", 102), _
    Array("a move without a record", Nothing, Nothing, "MoveFirst", 102))
  For Each c In cases
    Set e = NewEngine()
    If Not c(1) Is Nothing Then Set e.Parent = c(1)
    If Not c(2) Is Nothing Then Set e.RecordSet = c(2)
    e.CodeBlock = c(3)
    On Error Resume Next
    e.Execute
    Check "Execute with " & c(0) & " does not raise", Err.Number = 0, "raised " & Err.Number & " " & Err.Description
    Err.Clear
    On Error GoTo 0
    If IsEmpty(c(4)) Then
      Check "Execute with " & c(0) & " reports an error", e.ErrNum <> 0, "ErrNum is 0"
    Else
      CheckNumber "Execute with " & c(0) & " reports its number", e.ErrNum, c(4)
    End If
    Check "Execute with " & c(0) & " has a message", e.ErrMsg <> "", "ErrMsg is empty"
    CheckNumber "Execute with " & c(0) & " stops on line 1", e.CurrentLineNum, 1
  Next

  ' A stale error fails the next run at once; cleared by the host, it does not.
  Set e = NewEngine()
  e.CodeBlock = "x = (1 +"
  e.Execute
  e.CodeBlock = "DIM a" & vbCrLf & "a = 1"
  e.Execute
  CheckNumber "a stale error ends the next run as an engine error", e.ErrNum, -2147220004
  CheckNumber "a stale error ends the next run on its first line", e.CurrentLineNum, 1
  e.ErrNum = 0
  e.ErrMsg = ""
  e.Execute
  CheckNumber "after ErrNum = 0 the run succeeds", e.ErrNum, 0
  CheckValue "after ErrNum = 0 the run assigns", e.GetVarValue("A"), Array("Double", CDbl(1))
End Sub

' Values set by the host come back with their type; the script sees them.
Sub TestVariants()
  Dim e, d, grid, values, names, i, v, name, got
  Set e = NewEngine()
  Set d = CreateObject("Scripting.Dictionary")
  d.Add "k", 42
  grid = Array(0)
  ReDim grid(2, 1)
  grid(0, 0) = CInt(1)
  grid(0, 1) = T("chinese")
  grid(1, 0) = CCur(2.5)
  grid(1, 1) = Null
  grid(2, 0) = MakeDate(2005, 3, 1, 0, 0, 0)
  grid(2, 1) = True
  names = Array("A_INT", "A_LNG", "A_DBL", "A_CUR", "A_DATE", "A_STR", "A_BOOL", "A_NULL", "A_EMPTY", "A_OBJ", "GRID")
  values = Array(CInt(-12), CLng(70000), CDbl(2.5), CCur(3000.5), MakeDate(2005, 3, 1, 13, 5, 0), _
    T("chinese"), True, Null, Empty, d, grid)
  ' Names and values go in as variables (by reference), as hosts pass them.
  For i = 0 To UBound(names)
    name = names(i)
    If IsObject(values(i)) Then Set v = values(i) Else v = values(i)
    e.SetSysVar name, v
  Next
  For i = 0 To UBound(names)
    name = names(i)
    If IsObject(values(i)) Then
      Set got = e.GetVarValue(name)
      Check "GetVarValue(" & name & ") is the host's object", got Is d, Describe(got)
      CheckEqual "the object from GetVarValue works", got.Item("k"), 42
    ElseIf IsArray(values(i)) Then
      got = e.GetVarValue(name)
      CheckValue "GetVarValue(" & name & ")", got, Array("Array", Array(0, 0), Array( _
        Array(Array("Integer", CInt(1)), Array("String", T("chinese"))), _
        Array(Array("Currency", CCur(2.5)), Array("Null", Null)), _
        Array(Array("Date", grid(2, 0)), Array("Boolean", True))))
    Else
      CheckValue "GetVarValue(" & name & ")", e.GetVarValue(name), Array(TypeLabel(values(i)), values(i))
    End If
  Next

  e.CodeBlock = Lines(Array("DIM s, c, t, b, k", "s = A_STR & A_INT", "c = A_CUR * 2", _
    "t = A_DATE + 1", "b = NOT A_BOOL", _
    "k = LBound(GRID, 2) & "","" & UBound(GRID) & "","" & UBound(GRID, 2)", "A_INT = 99"))
  e.Execute
  CheckNumber "the script runs on the host's values", e.ErrNum, 0
  CheckValue "a String and an Integer joined", e.GetVarValue("S"), Array("String", T("chinese") & "-12")
  CheckValue "a Currency times a Double", e.GetVarValue("C"), Array("Double", CDbl(6001))
  CheckValue "a Date plus a day", e.GetVarValue("T"), Array("Date", MakeDate(2005, 3, 2, 13, 5, 0))
  CheckValue "NOT of a Boolean", e.GetVarValue("B"), Array("Boolean", False)
  CheckValue "the bounds of the host's array", e.GetVarValue("K"), Array("String", "0,2,1")
  CheckEqual "the host's variable is not written through", values(0), CInt(-12)

  v = CLng(5)
  name = "A_LNG"
  e.Vaule name, v
  CheckValue "Vaule assigns an existing variable", e.GetVarValue("A_LNG"), Array("Long", CLng(5))
  got = e.GetVarValue("NO_SUCH")
  CheckNumber "GetVarValue of an unknown name reports error 5", e.ErrNum, 5
End Sub

Sub TestLines()
  Dim e, kinds, k
  Set e = NewEngine()
  e.CodeBlock = "DIM a" & vbCrLf & "a = 1" & vbLf & vbCr & "IF a = 1 THEN" & vbCr & "END IF"
  e.Execute
  CheckNumber "a run over LF CR", e.ErrNum, 0
  CheckNumber "LineCount counts the empty line between LF and CR", e.LineCount, 5
  CheckEqual "GetLineCode(2)", e.GetLineCode(2), "a = 1"
  CheckEqual "GetLineCode(3) is the empty line", e.GetLineCode(3), ""
  CheckEqual "GetLineCode(5)", e.GetLineCode(5), "END IF"

  kinds = Array("DIM x", 101, "x=1", 102, "  if a then", 103, "Else", 104, "End If", 105, _
    "Do While a", 106, "do until a", 107, "Exit Do", 108, "Loop", 109, "End Do", 110, _
    "Exit For", 112, "' note", 114, "Rem x", 114, "MoveFirst", 115, T("moveNext"), 116, _
    "END", 120, "MsgBox 1", 122, "RaiseError 5", 125, "", 145, "Do", 150, "End Loop", 150)
  For k = 0 To UBound(kinds) Step 2
    CheckEqual "WhatSTMT(""" & kinds(k) & """)", e.WhatSTMT(kinds(k)), CInt(kinds(k + 1))
  Next
  k = e.WhatSTMT("For i = 1 To 3")
  CheckNumber "WhatSTMT of a line starting with a reserved word sets error 23", e.ErrNum, 23
End Sub

Sub TestStatementFlags()
  Dim e, top
  Set e = NewEngine()
  CheckNumber "StmtFlagCount of a new engine", e.StmtFlagCount, 0
  e.PushStmtFlag Array("If", 3, True)
  e.PushStmtFlag Array("Do While", 7, "i < 3")
  top = e.GetpopValueStmtFlag
  CheckValue "GetpopValueStmtFlag gives the top entry", top, Array("Array", Array(0), _
    Array(Array("String", "Do While"), Array("Integer", CInt(7)), Array("String", "i < 3")))
  CheckNumber "GetpopValueStmtFlag leaves it there", e.StmtFlagCount, 2
  top = e.PopStmtFlag
  CheckEqual "PopStmtFlag gives the top entry", top(0), "Do While"
  top = e.PopStmtFlag
  CheckEqual "PopStmtFlag then gives the one below", top(0), "If"
  CheckNumber "the stack is empty again", e.StmtFlagCount, 0
  top = e.PopStmtFlag
  CheckNumber "PopStmtFlag on an empty stack reports error 18", e.ErrNum, 18
  Check "PopStmtFlag on an empty stack gives Empty", IsEmpty(top), Describe(top)

  ' A run that fails inside a block leaves the block open for the host to see.
  Set e = NewEngine()
  e.CodeBlock = Lines(Array("DIM i", "i = 1", "IF i = 1 THEN", "i = (", "END IF"))
  e.Execute
  CheckNumber "a run failing inside IF stops on its line", e.CurrentLineNum, 4
  CheckNumber "IfCount shows the open IF", e.IfCount, 1
  CheckNumber "StmtFlagCount shows its entry", e.StmtFlagCount, 1

  ' The counters are the host's to set; END clears the IF and DO counters
  ' and the stack.
  Set e = NewEngine()
  e.IfCount = 2
  e.ForCount = 1
  e.DoCount = 3
  e.PushStmtFlag Array("If", 1, True)
  CheckNumber "IfCount as set", e.IfCount, 2
  CheckNumber "DoCount as set", e.DoCount, 3
  e.CodeBlock = "END"
  e.Execute
  CheckNumber "END runs without error", e.ErrNum, 0
  CheckNumber "END clears IfCount", e.IfCount, 0
  CheckNumber "END clears DoCount", e.DoCount, 0
  CheckNumber "END leaves ForCount", e.ForCount, 1
  CheckNumber "END empties the statement stack", e.StmtFlagCount, 0
End Sub

Sub TestRecord()
  Dim e, rs, ok
  Set e = NewEngine()
  Set rs = PayrollRecord()
  Set e.RecordSet = rs
  Check "isFieldName of a field", e.isFieldName(T("jobNo")), "False"
  Check "isFieldName ignores case", e.isFieldName("cODE"), "False"
  Check "isFieldName of no field", Not e.isFieldName("nope"), "True"
  Check "isFieldNameByArr of a field", e.isFieldNameByArr("code"), "False"
  Check "isFieldNameByArr of no field", Not e.isFieldNameByArr("nope"), "True"
  CheckValue "GetFieldValue by name", e.GetFieldValue(T("name")), Array("String", T("zhang"))
  CheckValue "GetFieldValue by position", e.GetFieldValue(2), Array("Currency", CCur(3000.5))

  e.CodeBlock = Lines(Array("DIM s, n", "s = 0", "n = """"", "DO WHILE NOT EOF", _
    "s = s + " & T("base"), "n = n & " & T("jobNo") & " & "" """, "MoveNext", "LOOP"))
  e.Execute
  CheckNumber "a loop over the record runs", e.ErrNum, 0
  CheckValue "it adds every row's field", e.GetVarValue("S"), Array("Currency", CCur(5900.5))
  CheckValue "it sees the rows in order", e.GetVarValue("N"), Array("String", "001 0012 002 ")
  Check "the record set is at its end", rs.EOF, "EOF is False"
  Check "the engine's EOF says so", e.EOF, "False"

  Check "MoveFirst", e.MoveFirst, "False"
  CheckNumber "MoveFirst moves the host's record set", rs.AbsolutePosition, 1
  Check "BOF on the first row is False", Not e.BOF, "True"
  Check "MoveLast", e.MoveLast, "False"
  CheckNumber "MoveLast moves the host's record set", rs.AbsolutePosition, 3
  Check "MovePrevious", e.MovePrevious, "False"
  CheckNumber "MovePrevious moves the host's record set", rs.AbsolutePosition, 2

  ok = e.ChangeField(T("base"), 10)
  Check "ChangeField", ok, "False"
  CheckFields "ChangeField writes the field of the current row", rs.Written, Array(T("base"), Array("Currency", CCur(10)))
  CheckNumber "ChangeField edits the record", rs.EditCount, 1
  CheckNumber "ChangeField updates the record", rs.UpdateCount, 1

  e.CodeBlock = Lines(Array("MoveFirst", T("base") & " = " & T("base") & " + 1", "Code = ""x"""))
  e.Execute
  CheckNumber "a script assigning fields runs", e.ErrNum, 0
  CheckFields "the script's assignments reach the record set", rs.Written, _
    Array(T("base"), Array("Currency", CCur(3001.5)), "Code", Array("String", "x"))
  CheckNumber "each assignment is updated", rs.UpdateCount, 3

  rs.MoveLast
  rs.MoveNext
  ok = e.MoveNext
  Check "MoveNext past the end gives False", Not ok, "True"
  CheckNumber "MoveNext past the end reports error 102", e.ErrNum, 102
  e.ErrNum = 0
  Set e.RecordSet = Nothing
  Check "isFieldName without a record", Not e.isFieldName(T("jobNo")), "True"
End Sub

Sub TestCells()
  Dim e, book, grid
  Set e = NewEngine()
  Set book = New StandInWorkbook
  book.AddSheet "Sheet1"
  book.AddSheet T("sheet2")
  Set e.ExcelBook = book
  Set e.ActiveExcelSheet = book.Worksheets.Item(2)
  grid = Array(0)
  ReDim grid(2, 1)
  grid(0, 0) = 1
  grid(1, 0) = 2
  grid(2, 0) = 3
  e.SetSysVar "GRID", grid
  e.CodeBlock = Lines(Array("DIM r, v", _
    "r = SETCELL(""C"", 5, 3.5)", _
    "r = SETCELL(""AA"", 1, ""x"", ""Sheet1"")", _
    "r = SetCellFormula(""D"", 5, ""=C5*1.1"", 1)", _
    "r = SETCELL(""ZZ"", 3, 1, 2)", _
    "r = SETCELL(""A"", 1, GRID, 1)", _
    "v = GETCELL(""C"", 5)"))
  e.Execute
  CheckNumber "a script with cell functions runs", e.ErrNum, 0
  CheckList "the cells written, on the active sheet when none is named", book.Writes, Array( _
    T("sheet2") & "!C5 value Double 3.5", _
    "Sheet1!AA1 value String ""x""", _
    "Sheet1!D5 formula =C5*1.1", _
    T("sheet2") & "!ZZ3 value Double 1", _
    "Sheet1!A1:A2 value " & Describe(grid))
  CheckValue "GETCELL reads the active sheet", e.GetVarValue("V"), Array("Double", CDbl(3.5))

  Set e = NewEngine()
  e.CodeBlock = "DIM v" & vbCrLf & "v = GETCELL(""A"", 1)"
  e.Execute
  CheckNumber "GETCELL without a workbook reports error 1003", e.ErrNum, 1003
  Check "GETCELL without a workbook says so", InStr(e.ErrMsg, T("noBook")) > 0, e.ErrMsg
End Sub

Sub TestWageFunctions()
  Dim e, conn
  Set e = NewEngine()
  Set conn = New StandInConnection
  conn.Answer T("pieceSql"), Array(T("total")), Array("Long"), Array(Array(CLng(230)))
  conn.Answer T("itemSql3"), Array("WA_Value"), Array("Currency"), Array(Array(CCur(2800)))
  Set e.Parent = NewParent(conn)
  e.CodeBlock = Lines(Array("DIM a, b, c", _
    "a = " & T("piece") & "(2005, 3, ""001"")", _
    "b = " & T("item") & "(2005, 3, ""002"", """ & T("base") & """, 0)", _
    "c = " & T("item") & "(2005, 4, ""002"", """ & T("base") & """, -1)"))
  e.Execute
  CheckNumber "a script with wage functions runs", e.ErrNum, 0
  CheckList "the SQL texts the connection received", conn.Received, _
    Array(T("pieceSql"), T("itemSql3"), T("itemSql4"))
  CheckValue "the piece-rate total is the answer's, as a Double", e.GetVarValue("A"), Array("Double", CDbl(230))
  CheckValue "the wage item is the answer's", e.GetVarValue("B"), Array("Currency", CCur(2800))
  CheckValue "a failed wage item query gives the default", e.GetVarValue("C"), Array("Double", CDbl(-1))
End Sub

Sub TestUserInterface()
  Dim e, ui
  Set e = NewEngine()
  Set ui = NewUserInterface(Array("abc"))
  Set e.UserInterface = ui
  e.CodeBlock = Lines(Array("DIM x, y", "MSGBOX """ & T("chinese") & """", "x = Input(""p"", ""t"", ""d"")", "y = Input(""q"")"))
  e.Execute
  CheckNumber "a script with boxes runs", e.ErrNum, 0
  CheckList "MSGBOX reaches the host's MessageBox", ui.Messages, Array(T("chinese"))
  CheckList "with the OK button only", ui.Buttons, Array(CLng(0))
  CheckList "Input reaches the host's InputBox", ui.Prompts, Array("p", "q")
  CheckValue "Input takes the host's answer", e.GetVarValue("X"), Array("String", "abc")
  CheckValue "Input cancelled by the host gives """"", e.GetVarValue("Y"), Array("String", "")

  Set e = NewEngine()
  e.Unattended = True
  e.CodeBlock = Lines(Array("DIM y", "MSGBOX 1", "y = Input(""q"")"))
  e.Execute
  CheckNumber "an unattended run with boxes runs", e.ErrNum, 0
  CheckValue "an unattended input box is cancelled", e.GetVarValue("Y"), Array("String", "")
End Sub

Sub TestTwoEngines()
  Dim e1, e2
  Set e1 = NewEngine()
  Set e2 = NewEngine()
  e1.SetSysVar "A", 1
  e2.CodeBlock = Lines(Array("DIM A, B", "A = 2", "B = 3"))
  e2.Execute
  e1.CodeBlock = "A = A + 10"
  e1.Execute
  CheckNumber "the first engine ran", e1.ErrNum, 0
  CheckNumber "the first engine keeps its A", e1.GetVarValue("A"), 11
  CheckNumber "the second engine keeps its A", e2.GetVarValue("A"), 2
  Check "B is the second engine's alone", Not e1.IsVarDefined("B"), "B is defined in the first"
End Sub

OpenChecks
On Error Resume Next
TestCreation
CheckNoError "creation"
TestExecuteNeverRaises
CheckNoError "Execute never raises"
TestVariants
CheckNoError "variants"
TestLines
CheckNoError "lines"
TestStatementFlags
CheckNoError "statement flags"
TestRecord
CheckNoError "record"
TestCells
CheckNoError "cells"
TestWageFunctions
CheckNoError "wage functions"
TestUserInterface
CheckNoError "user interface"
TestTwoEngines
CheckNoError "two engines"
FinishChecks "component tests"
