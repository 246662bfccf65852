' What the component tests share: the report, the texts file and the
' comparison of values with expected ones.
'
' The report goes to a UTF-16 file beside the script (NAME.log), which the
' runner prints: Wine's console output has no Chinese. Texts with Chinese in
' them come from NAME.strings (UTF-16, one "key<TAB>text" per line), since
' Wine's VBScript reads a script file in the ANSI code page and has no ChrW.

Dim checkFso, checkLog, checkTexts, checksPassed, checksFailed
Set checkFso = CreateObject("Scripting.FileSystemObject")
checksPassed = 0
checksFailed = 0

Sub OpenChecks()
  Dim base, f, line, tab
  base = Left(WScript.ScriptFullName, Len(WScript.ScriptFullName) - 4)
  Set checkLog = checkFso.CreateTextFile(base & ".log", True, True)
  Set checkTexts = CreateObject("Scripting.Dictionary")
  If checkFso.FileExists(base & ".strings") Then
    Set f = checkFso.OpenTextFile(base & ".strings", 1, False, -1)
    Do While Not f.AtEndOfStream
      line = f.ReadLine
      tab = InStr(line, Chr(9))
      If tab > 0 Then checkTexts(Left(line, tab - 1)) = Mid(line, tab + 1)
    Loop
    f.Close
  End If
End Sub

' The text stored under key in NAME.strings.
Function T(key)
  If Not checkTexts.Exists(CStr(key)) Then Err.Raise 5, "T", "no text " & key & " in the strings file"
  T = checkTexts(CStr(key))
End Function

Sub Say(text)
  checkLog.WriteLine text
End Sub

Sub Check(what, ok, detail)
  If ok Then
    checksPassed = checksPassed + 1
    Say "PASS " & what
  Else
    checksFailed = checksFailed + 1
    Say "FAIL " & what & ": " & detail
  End If
End Sub

' A call that raised instead of answering.
Sub CheckNoError(what)
  If Err.Number <> 0 Then
    Check what, False, "raised " & Err.Number & " " & Err.Description
    Err.Clear
  End If
End Sub

' The report's last line; the runner looks for "LABEL: N passed" alone.
Sub FinishChecks(label)
  If checksFailed = 0 Then
    Say label & ": " & checksPassed & " passed"
  Else
    Say label & ": " & checksPassed & " passed, " & checksFailed & " FAILED"
  End If
  checkLog.Close
  WScript.Quit checksFailed
End Sub

Function Dimensions(a)
  Dim d, ub
  Dimensions = 0
  On Error Resume Next
  For d = 1 To 60
    ub = UBound(a, d)
    If Err.Number <> 0 Then
      Err.Clear
      Exit Function
    End If
    Dimensions = d
  Next
End Function

Function TypeLabel(v)
  If IsArray(v) Then
    TypeLabel = "Array"
    Exit Function
  End If
  Select Case VarType(v)
    Case vbEmpty: TypeLabel = "Empty"
    Case vbNull: TypeLabel = "Null"
    Case vbInteger: TypeLabel = "Integer"
    Case vbLong: TypeLabel = "Long"
    Case vbSingle: TypeLabel = "Single"
    Case vbDouble: TypeLabel = "Double"
    Case vbCurrency: TypeLabel = "Currency"
    Case vbDate: TypeLabel = "Date"
    Case vbString: TypeLabel = "String"
    Case vbObject: TypeLabel = "Object"
    Case vbBoolean: TypeLabel = "Boolean"
    Case vbByte: TypeLabel = "Byte"
    Case Else: TypeLabel = "VarType " & VarType(v)
  End Select
End Function

Function TwoDigits(n)
  TwoDigits = Right("0" & n, 2)
End Function

Function DateLabel(d)
  DateLabel = Year(d) & "-" & TwoDigits(Month(d)) & "-" & TwoDigits(Day(d)) & " " & _
    TwoDigits(Hour(d)) & ":" & TwoDigits(Minute(d)) & ":" & TwoDigits(Second(d))
End Function

' A readable form: type and value, strings quoted, arrays with their bounds.
Function Describe(v)
  Dim d, i, j, s
  If IsArray(v) Then
    d = Dimensions(v)
    s = "Array("
    For i = 1 To d
      If i > 1 Then s = s & ", "
      s = s & LBound(v, i) & " to " & UBound(v, i)
    Next
    s = s & ")"
    If d = 1 Then
      s = s & " ["
      For i = LBound(v) To UBound(v)
        If i > LBound(v) Then s = s & ", "
        s = s & Describe(v(i))
      Next
      s = s & "]"
    ElseIf d = 2 Then
      s = s & " ["
      For i = LBound(v, 1) To UBound(v, 1)
        If i > LBound(v, 1) Then s = s & "; "
        For j = LBound(v, 2) To UBound(v, 2)
          If j > LBound(v, 2) Then s = s & ", "
          s = s & Describe(v(i, j))
        Next
      Next
      s = s & "]"
    End If
    Describe = s
    Exit Function
  End If
  Select Case VarType(v)
    Case vbEmpty, vbNull: Describe = TypeLabel(v)
    Case vbString: Describe = "String """ & v & """"
    Case vbDate: Describe = "Date " & DateLabel(v)
    Case vbObject: Describe = "Object " & TypeName(v)
    Case Else: Describe = TypeLabel(v) & " " & CStr(v)
  End Select
End Function

' A date from its parts, also before 1899-12-30, where the time of day
' counts away from zero.
Function MakeDate(y, m, d, h, mi, s)
  Dim day, time
  day = CDbl(DateSerial(y, m, d))
  time = CDbl(TimeSerial(h, mi, s))
  If day < 0 Then MakeDate = CDate(day - time) Else MakeDate = CDate(day + time)
End Function

' An expected value: Array(type name, value), or for an array
' Array("Array", lower bounds, elements) with the elements nested per
' dimension (each an expected value). "" when actual matches, else what
' differs.
Function Difference(actual, expected)
  Dim kind
  kind = expected(0)
  Difference = ""
  If TypeLabel(actual) <> kind Then
    Difference = "got " & Describe(actual) & ", expected type " & kind
  ElseIf kind = "Array" Then
    Difference = ArrayDifference(actual, expected(1), expected(2))
  ElseIf kind = "Date" Then
    If Abs(CDbl(actual) - CDbl(expected(1))) > 0.5 / 86400 Then
      Difference = "got " & Describe(actual) & ", expected " & Describe(expected(1))
    End If
  ElseIf kind <> "Empty" And kind <> "Null" And kind <> "Object" Then
    If actual <> expected(1) Then
      Difference = "got " & Describe(actual) & ", expected " & Describe(expected(1))
    End If
  End If
End Function

Function ArrayDifference(actual, lbs, rows)
  Dim d, i, j, r
  d = Dimensions(actual)
  ArrayDifference = ""
  If d <> UBound(lbs) + 1 Then
    ArrayDifference = "got " & Describe(actual) & ", expected " & (UBound(lbs) + 1) & " dimensions"
    Exit Function
  End If
  If d = 0 Then Exit Function
  If d > 2 Then
    ArrayDifference = "cannot compare arrays of " & d & " dimensions"
    Exit Function
  End If
  If LBound(actual, 1) <> lbs(0) Or UBound(actual, 1) - LBound(actual, 1) <> UBound(rows) Then
    ArrayDifference = "got " & Describe(actual) & ", expected dimension 1 from " & lbs(0) & " with " & (UBound(rows) + 1)
    Exit Function
  End If
  If d = 2 And UBound(rows) >= 0 Then
    If LBound(actual, 2) <> lbs(1) Or UBound(actual, 2) - LBound(actual, 2) <> UBound(rows(0)) Then
      ArrayDifference = "got " & Describe(actual) & ", expected dimension 2 from " & lbs(1) & " with " & (UBound(rows(0)) + 1)
      Exit Function
    End If
  End If
  For i = 0 To UBound(rows)
    If d = 1 Then
      r = Difference(actual(lbs(0) + i), rows(i))
      If r <> "" Then
        ArrayDifference = "element " & (lbs(0) + i) & ": " & r
        Exit Function
      End If
    Else
      For j = 0 To UBound(rows(i))
        r = Difference(actual(lbs(0) + i, lbs(1) + j), rows(i)(j))
        If r <> "" Then
          ArrayDifference = "element (" & (lbs(0) + i) & ", " & (lbs(1) + j) & "): " & r
          Exit Function
        End If
      Next
    End If
  Next
End Function

Sub CheckValue(what, actual, expected)
  Dim diff
  diff = Difference(actual, expected)
  Check what, diff = "", diff
End Sub

Sub CheckEqual(what, actual, expected)
  If VarType(actual) = VarType(expected) Then
    If actual = expected Then
      Check what, True, ""
      Exit Sub
    End If
  End If
  Check what, False, "got " & Describe(actual) & ", expected " & Describe(expected)
End Sub

' A recorded list (a Dictionary keyed 0, 1, ...) against an array of texts.
Sub CheckList(what, recorded, expected)
  Dim i, got
  got = recorded.Items
  If UBound(got) <> UBound(expected) Then
    Check what, False, "got " & Describe(got) & ", expected " & Describe(expected)
    Exit Sub
  End If
  For i = 0 To UBound(got)
    If VarType(got(i)) <> VarType(expected(i)) Then
      Check what, False, "item " & i & ": got " & Describe(got(i)) & ", expected " & Describe(expected(i))
      Exit Sub
    End If
    If got(i) <> expected(i) Then
      Check what, False, "item " & i & ": got " & Describe(got(i)) & ", expected " & Describe(expected(i))
      Exit Sub
    End If
  Next
  Check what, True, ""
End Sub

' A number of any numeric type (the counters come as Integer or Long).
Sub CheckNumber(what, actual, expected)
  Select Case VarType(actual)
    Case vbInteger, vbLong, vbSingle, vbDouble, vbCurrency, vbByte
      If actual = expected Then
        Check what, True, ""
        Exit Sub
      End If
  End Select
  Check what, False, "got " & Describe(actual) & ", expected " & expected
End Sub

' The fields a record set had written (name -> value, in the order first
' written) against Array(name1, expected value 1, name2, ...).
Sub CheckFields(what, written, expected)
  Dim names, i, diff
  names = written.Keys
  If UBound(names) + 1 <> (UBound(expected) + 1) \ 2 Then
    Check what, False, "got fields " & Describe(names) & ", expected " & ((UBound(expected) + 1) \ 2)
    Exit Sub
  End If
  For i = 0 To UBound(names)
    If names(i) <> expected(2 * i) Then
      Check what, False, "field " & i & " is " & names(i) & ", expected " & expected(2 * i)
      Exit Sub
    End If
    diff = Difference(written(names(i)), expected(2 * i + 1))
    If diff <> "" Then
      Check what, False, names(i) & ": " & diff
      Exit Sub
    End If
  Next
  Check what, True, ""
End Sub
