' The report, the texts and the comparison of values the test scripts share.
' The report is a UTF-16 NAME.log, since Wine's console drops Chinese; texts
' with Chinese come from NAME.strings ("key<TAB>text" lines in UTF-16), since
' Wine's VBScript reads a script in the ANSI code page and has no ChrW.
Dim checkLog, checkTexts, checksPassed, checksFailed

Sub OpenChecks()
  Dim fso, base, f, line
  Set fso = CreateObject("Scripting.FileSystemObject"): base = Left(WScript.ScriptFullName, Len(WScript.ScriptFullName) - 4)
  Set checkLog = fso.CreateTextFile(base & ".log", True, True): Set checkTexts = CreateObject("Scripting.Dictionary")
  Set f = fso.OpenTextFile(base & ".strings", 1, True, -1)
  Do While Not f.AtEndOfStream
    line = f.ReadLine
    If InStr(line, Chr(9)) > 0 Then checkTexts(Left(line, InStr(line, Chr(9)) - 1)) = Mid(line, InStr(line, Chr(9)) + 1)
  Loop
  checksPassed = 0: checksFailed = 0
End Sub

Function T(key)
  If Not checkTexts.Exists(CStr(key)) Then Err.Raise 5, "T", "no text " & key & " in the strings file"
  T = checkTexts(CStr(key))
End Function

Sub Say(text): checkLog.WriteLine text: End Sub

Sub Check(what, ok, detail)
  If ok Then checksPassed = checksPassed + 1: Say "PASS " & what Else checksFailed = checksFailed + 1: Say "FAIL " & what & ": " & detail
End Sub

' After a test run under On Error Resume Next: whatever broke it off fails it.
Sub CheckNoError(what)
  If Err.Number <> 0 Then Check what, False, "raised " & Err.Number & " " & Err.Description
  Err.Clear
End Sub

' run.sh takes "LABEL: N passed" alone on the last line as success.
Sub FinishChecks(label)
  If checksFailed > 0 Then Say label & ": " & checksPassed & " passed, " & checksFailed & " FAILED" Else Say label & ": " & checksPassed & " passed"
  checkLog.Close: WScript.Quit checksFailed
End Sub

Function Dimensions(a)
  Dim d, ub
  On Error Resume Next
  For d = 1 To 60
    ub = UBound(a, d): If Err.Number <> 0 Then Exit For
  Next
  Err.Clear: Dimensions = d - 1
End Function

Function Describe(v)
  Dim x, d
  If IsArray(v) Then
    For d = 1 To Dimensions(v): Describe = Describe & ", " & LBound(v, d) & " to " & UBound(v, d): Next
    Describe = "Array(" & Mid(Describe, 3) & ") ["
    For Each x In v: Describe = Describe & Describe(x) & "; ": Next
    Describe = Describe & "]"
  ElseIf IsObject(v) Or IsNull(v) Or IsEmpty(v) Then
    Describe = TypeName(v)
  ElseIf VarType(v) = vbString Then
    Describe = "String """ & v & """"
  Else
    Describe = TypeName(v) & " " & v
  End If
End Function

' A date from its parts, also before 1899-12-30, where the time of day
' counts away from zero.
Function MakeDate(y, m, d, h, mi, s)
  MakeDate = CDbl(TimeSerial(h, mi, s))
  If DateSerial(y, m, d) < 0 Then MakeDate = -MakeDate
  MakeDate = CDate(CDbl(DateSerial(y, m, d)) + MakeDate)
End Function

' "" when actual has expected's type and value. Nothing stands for any object;
' an expected array is Array(lower bounds, elements nested per dimension).
Function Differ(actual, expected)
  Dim same
  If IsArray(expected) Then Differ = ArrayDiffer(actual, expected(0), expected(1)): Exit Function
  same = VarType(actual) = VarType(expected)
  If same And VarType(actual) = vbDate Then
    same = Abs(CDbl(actual) - CDbl(expected)) <= 0.5 / 86400
  ElseIf same And Not (IsObject(actual) Or IsNull(actual) Or IsEmpty(actual)) Then
    same = actual = expected
  End If
  If Not same Then Differ = "got " & Describe(actual) & ", expected " & Describe(expected)
End Function

Function ArrayDiffer(a, lbs, rows)
  Dim i, j, d
  d = UBound(lbs) + 1
  If Dimensions(a) <> d Then
    ArrayDiffer = "got " & Describe(a) & ", expected " & d & " dimensions"
  ElseIf LBound(a) <> lbs(0) Or UBound(a) - lbs(0) <> UBound(rows) Then
    ArrayDiffer = "got " & Describe(a) & ", expected " & (UBound(rows) + 1) & " from " & lbs(0)
  ElseIf d = 2 And UBound(rows) >= 0 Then
    If LBound(a, 2) <> lbs(1) Or UBound(a, 2) - lbs(1) <> UBound(rows(0)) Then ArrayDiffer = "got " & Describe(a) & ", expected columns from " & lbs(1)
  End If
  For i = 0 To UBound(rows)
    If ArrayDiffer <> "" Then Exit Function
    If d = 1 Then
      ArrayDiffer = Differ(a(lbs(0) + i), rows(i))
    Else
      For j = 0 To UBound(rows(i))
        If ArrayDiffer = "" Then ArrayDiffer = Differ(a(lbs(0) + i, lbs(1) + j), rows(i)(j))
      Next
    End If
    If ArrayDiffer <> "" Then ArrayDiffer = "element " & (lbs(0) + i) & ": " & ArrayDiffer
  Next
End Function

Sub Expect(what, actual, expected): Check what, Differ(actual, expected) = "", Differ(actual, expected): End Sub

Function List(items): List = Array(Array(0), items): End Function


' A counter, whichever integer type it comes as.
Sub Num(what, actual, expected)
  If VarType(actual) = vbInteger Or VarType(actual) = vbLong Then Check what, actual = expected, actual & ", expected " & expected Else Check what, False, "got " & Describe(actual)
End Sub
