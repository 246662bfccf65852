' Stand-ins for the objects a payroll host hands the engine: a parent whose
' Connect is a database connection answering from prepared rows, record
' sets, a workbook and a user interface. Each one records what the engine
' did to it, so that a test can check the calls and not only the results.
'
' Written for Wine's VBScript as well as Windows': no ChrW, AscW, Escape,
' ExecuteGlobal or GetRef (not implemented there), no "Dim a()" (ReDim on it
' crashes), one name per Public or Private line of a class (the parser takes
' no list there). The runner puts checks.vbs and this file in front of each
' test script (Describe and Dimensions come from checks.vbs).

' A value written to a field becomes the field's declared type, as a
' database field converts what it is given; Null stays Null.
Function StandInCoerce(v, typeName)
  If IsNull(v) Or IsEmpty(v) Then
    StandInCoerce = Null
    Exit Function
  End If
  Select Case typeName
    Case "String": StandInCoerce = CStr(v)
    Case "Integer": StandInCoerce = CInt(v)
    Case "Long": StandInCoerce = CLng(v)
    Case "Double": StandInCoerce = CDbl(v)
    Case "Currency": StandInCoerce = CCur(v)
    Case "Date": StandInCoerce = CDate(v)
    Case "Boolean": StandInCoerce = CBool(v)
    Case Else: StandInCoerce = v
  End Select
End Function

' A list kept as a Dictionary keyed 0, 1, ... (Add at Count, Items in order).
Function StandInList()
  Set StandInList = CreateObject("Scripting.Dictionary")
End Function

Const StandInNoCurrentRow = 3021
Const StandInNoSuchItem = 3265

Class StandInField
  Public Name
  Public DeclaredType
  Private owner
  Private column

  Public Sub Init(recordSet, index, fieldName, typeName)
    Set owner = recordSet
    column = index
    Name = fieldName
    DeclaredType = typeName
  End Sub

  Public Default Property Get Value()
    Value = owner.Cell(column)
  End Property

  Public Property Let Value(v)
    owner.WriteCell column, v
  End Property
End Class

Class StandInFields
  Private items
  Private total

  Public Sub Init(fieldObjects)
    items = fieldObjects
    total = UBound(fieldObjects) + 1
  End Sub

  Public Property Get Count()
    Count = total
  End Property

  ' By 0-based position or by name, case-insensitively.
  Public Default Function Item(key)
    Dim i
    If VarType(key) = vbString Then
      For i = 0 To total - 1
        If UCase(items(i).Name) = UCase(key) Then
          Set Item = items(i)
          Exit Function
        End If
      Next
    ElseIf IsNumeric(key) Then
      If key >= 0 And key < total Then
        Set Item = items(CLng(key))
        Exit Function
      End If
    End If
    Err.Raise StandInNoSuchItem, "StandInFields", "Item cannot be found in the collection: " & key
  End Function
End Class

' A record set over fixed rows: names(j) and types(j) per field, rows(i)(j)
' per value. Moves, BOF and EOF behave as a data-access record set's do;
' every field write is kept in Written (field name -> value after the last
' write, in the order first written).
Class StandInRecordSet
  Private data
  Private fieldList
  Private rowCount
  Private fieldCount
  Private position
  Public Written
  Public EditCount
  Public UpdateCount
  Public State

  Private Sub Class_Initialize()
    Set Written = CreateObject("Scripting.Dictionary")
    EditCount = 0
    UpdateCount = 0
    State = 1
  End Sub

  Public Sub Init(names, types, rows)
    Dim i, j, f, made
    fieldCount = UBound(names) + 1
    rowCount = UBound(rows) + 1
    made = names
    For j = 0 To fieldCount - 1
      Set f = New StandInField
      f.Init Me, j, names(j), types(j)
      Set made(j) = f
    Next
    Set fieldList = New StandInFields
    fieldList.Init made
    If rowCount > 0 Then
      ReDim data(rowCount - 1, fieldCount - 1)
      For i = 0 To rowCount - 1
        For j = 0 To fieldCount - 1
          data(i, j) = rows(i)(j)
        Next
      Next
    End If
    position = 0
  End Sub

  Public Property Get Fields()
    Set Fields = fieldList
  End Property

  Public Property Get RecordCount()
    RecordCount = rowCount
  End Property

  Public Property Get AbsolutePosition()
    AbsolutePosition = position + 1
  End Property

  Public Property Get BOF()
    BOF = (position < 0 Or rowCount = 0)
  End Property

  Public Property Get EOF()
    EOF = (position >= rowCount)
  End Property

  Private Sub RequireRow()
    If position < 0 Or position >= rowCount Then
      Err.Raise StandInNoCurrentRow, "StandInRecordSet", "Either BOF or EOF is True"
    End If
  End Sub

  Public Function Cell(column)
    RequireRow
    Cell = data(position, column)
  End Function

  Public Sub WriteCell(column, v)
    Dim f, stored
    RequireRow
    Set f = fieldList.Item(CLng(column))
    stored = StandInCoerce(v, f.DeclaredType)
    data(position, column) = stored
    If Written.Exists(f.Name) Then
      Written(f.Name) = stored
    Else
      Written.Add f.Name, stored
    End If
  End Sub

  Public Sub Edit()
    RequireRow
    EditCount = EditCount + 1
  End Sub

  Public Sub Update()
    RequireRow
    UpdateCount = UpdateCount + 1
  End Sub

  Public Sub MoveFirst()
    position = 0
  End Sub

  Public Sub MoveLast()
    position = rowCount - 1
    If rowCount = 0 Then position = 0
  End Sub

  Public Sub MoveNext()
    If position >= rowCount Then Err.Raise StandInNoCurrentRow, "StandInRecordSet", "EOF is True"
    position = position + 1
  End Sub

  Public Sub MovePrevious()
    If position < 0 Or rowCount = 0 Then Err.Raise StandInNoCurrentRow, "StandInRecordSet", "BOF is True"
    position = position - 1
  End Sub

  Public Sub Close()
    State = 0
  End Sub

End Class

Function NewRecordSet(names, types, rows)
  Dim rs
  Set rs = New StandInRecordSet
  rs.Init names, types, rows
  Set NewRecordSet = rs
End Function

' The host's database connection: every text given to Execute is kept in
' Received; a text with a prepared answer gets a fresh record set over its
' rows, any other text is kept in Unexpected as well and fails (the error's
' description does not survive every automation layer, Unexpected does).
Class StandInConnection
  Public Received
  Public Unexpected
  Public ConnectionString
  Private answers

  Private Sub Class_Initialize()
    Set Received = CreateObject("Scripting.Dictionary")
    Set Unexpected = CreateObject("Scripting.Dictionary")
    Set answers = CreateObject("Scripting.Dictionary")
    ConnectionString = "Provider=KorvexStandIn;Data Source=prepared answers"
  End Sub

  Public Sub Answer(sql, names, types, rows)
    answers(sql) = Array(names, types, rows)
  End Sub

  Public Function Execute(sql)
    Dim a
    Received.Add Received.Count, sql
    If Not answers.Exists(sql) Then
      Unexpected.Add Unexpected.Count, sql
      Err.Raise vbObjectError + 1001, "StandInConnection", "no prepared answer for: " & sql
    End If
    a = answers(sql)
    Set Execute = NewRecordSet(a(0), a(1), a(2))
  End Function
End Class

Class StandInParent
  Public Connect
End Class

' A connection the SQL functions open on their own from the host's
' connection string; its statements go to the host's connection, whose
' answers and log it shares.
Class StandInOwnConnection
  Public ConnectionString
  Public State
  Public Host

  Private Sub Class_Initialize()
    State = 0
  End Sub

  Public Sub Open()
    If ConnectionString <> Host.ConnectionString Then
      Err.Raise vbObjectError + 1002, "StandInOwnConnection", "not the host's connection string: " & ConnectionString
    End If
    State = 1
  End Sub

  Public Sub Close()
    State = 0
  End Sub

  Public Function Execute(sql)
    Set Execute = Host.Execute(sql)
  End Function
End Class

' Creates the connections the SQL functions make on their own; Created
' lists the class names asked for.
Class StandInObjectFactory
  Public Host
  Public Created

  Private Sub Class_Initialize()
    Set Created = StandInList()
  End Sub

  Public Function CreateObject(className)
    Dim made
    Created.Add Created.Count, className
    Select Case className
      Case "Connection"
        Set made = New StandInOwnConnection
        Set made.Host = Host
      Case Else
        Err.Raise 429, "StandInObjectFactory", "cannot create " & className
    End Select
    Set CreateObject = made
  End Function
End Class

Function NewObjectFactory(connection)
  Dim f
  Set f = New StandInObjectFactory
  Set f.Host = connection
  Set NewObjectFactory = f
End Function

Function NewParent(connection)
  Dim p
  Set p = New StandInParent
  Set p.Connect = connection
  Set NewParent = p
End Function

' Column letters of a column number (1 = A, 27 = AA).
Function StandInColumnName(column)
  Dim n, s
  n = column
  s = ""
  Do While n > 0
    s = Chr(65 + ((n - 1) Mod 26)) & s
    n = (n - 1) \ 26
  Loop
  StandInColumnName = s
End Function

' A block of cells of a sheet; value and Formula writes go to the workbook.
Class StandInRange
  Private sheet
  Private firstRow
  Private firstColumn
  Private height
  Private width

  Public Sub Init(owner, row, column, rows, columns)
    Set sheet = owner
    firstRow = row
    firstColumn = column
    height = rows
    width = columns
  End Sub

  Public Property Get Address()
    Address = StandInColumnName(firstColumn) & firstRow
    If height > 1 Or width > 1 Then
      Address = Address & ":" & StandInColumnName(firstColumn + width - 1) & (firstRow + height - 1)
    End If
  End Property

  Public Function Resize(rows, columns)
    Dim r
    Set r = New StandInRange
    r.Init sheet, firstRow, firstColumn, rows, columns
    Set Resize = r
  End Function

  Public Default Property Get Value()
    Value = sheet.CellValue(firstRow, firstColumn)
  End Property

  ' A whole array fills the block from its first element on; a single value
  ' fills every cell of the block.
  Public Property Let Value(v)
    Dim i, j, lb1, lb2, dims
    sheet.Book.Record sheet.Name & "!" & Address & " value " & Describe(v)
    If IsArray(v) Then
      dims = Dimensions(v)
      lb1 = LBound(v, 1)
      If dims > 1 Then lb2 = LBound(v, 2)
      For i = 0 To height - 1
        For j = 0 To width - 1
          If dims = 1 Then
            If j = 0 Then sheet.SetCellValue firstRow + i, firstColumn + j, v(lb1 + i)
          Else
            sheet.SetCellValue firstRow + i, firstColumn + j, v(lb1 + i, lb2 + j)
          End If
        Next
      Next
    Else
      For i = 0 To height - 1
        For j = 0 To width - 1
          sheet.SetCellValue firstRow + i, firstColumn + j, v
        Next
      Next
    End If
  End Property

  Public Property Get Formula()
    Formula = sheet.CellValue(firstRow, firstColumn)
  End Property

  Public Property Let Formula(text)
    sheet.Book.Record sheet.Name & "!" & Address & " formula " & text
    sheet.SetCellValue firstRow, firstColumn, text
  End Property
End Class

Class StandInSheet
  Public Name
  Public Index
  Public Book
  Private stored

  Private Sub Class_Initialize()
    Set stored = CreateObject("Scripting.Dictionary")
  End Sub

  Public Property Get Cells(row, column)
    Dim r
    Set r = New StandInRange
    r.Init Me, CLng(row), CLng(column), 1, 1
    Set Cells = r
  End Property

  Public Function CellValue(row, column)
    Dim key
    key = row & "," & column
    If stored.Exists(key) Then CellValue = stored(key)
  End Function

  Public Sub SetCellValue(row, column, v)
    stored(row & "," & column) = v
  End Sub
End Class

Class StandInSheets
  Private list

  Public Sub Init(sheets)
    Set list = sheets
  End Sub

  Public Property Get Count()
    Count = list.Count
  End Property

  ' By number from 1 or by name.
  Public Default Function Item(key)
    Dim s, found
    For Each s In list.Items
      If VarType(key) = vbString Then
        found = (UCase(s.Name) = UCase(key))
      Else
        found = (s.Index = key)
      End If
      If found Then
        Set Item = s
        Exit Function
      End If
    Next
    Err.Raise 9, "StandInSheets", "Subscript out of range: " & key
  End Function
End Class

' A workbook of named sheets; Writes lists every value and formula written,
' e.g. "Sheet1!C5 value Double 3", "Sheet1!D5 formula =C5*1.1".
Class StandInWorkbook
  Public Writes
  Private sheets
  Private sheetList

  Private Sub Class_Initialize()
    Set Writes = CreateObject("Scripting.Dictionary")
    Set sheets = CreateObject("Scripting.Dictionary")
    Set sheetList = New StandInSheets
    sheetList.Init sheets
  End Sub

  Public Function AddSheet(sheetName)
    Dim s
    Set s = New StandInSheet
    s.Name = sheetName
    s.Index = sheets.Count + 1
    Set s.Book = Me
    sheets.Add sheets.Count, s
    Set AddSheet = s
  End Function

  Public Property Get Worksheets()
    Set Worksheets = sheetList
  End Property

  Public Sub Record(text)
    Writes.Add Writes.Count, text
  End Sub
End Class

' Message and input boxes: every text is kept; Yes/No boxes get YesNoAnswer
' (6 = Yes, 7 = No), OK boxes 1; input boxes take the prepared answers in
' turn and are cancelled (Empty) once they run out.
Class StandInUserInterface
  Public Messages
  Public Buttons
  Public Titles
  Public Prompts
  Public Answers
  Public YesNoAnswer

  Private Sub Class_Initialize()
    Set Messages = CreateObject("Scripting.Dictionary")
    Set Buttons = CreateObject("Scripting.Dictionary")
    Set Titles = CreateObject("Scripting.Dictionary")
    Set Prompts = CreateObject("Scripting.Dictionary")
    Set Answers = CreateObject("Scripting.Dictionary")
    YesNoAnswer = 6
  End Sub

  Public Function MessageBox(text, buttonSet, title)
    Messages.Add Messages.Count, text
    Buttons.Add Buttons.Count, buttonSet
    Titles.Add Titles.Count, title
    MessageBox = 1
    If buttonSet = 4 Then MessageBox = YesNoAnswer
  End Function

  Public Function InputBox(prompt, title, defaultText)
    Prompts.Add Prompts.Count, prompt
    If Prompts.Count <= Answers.Count Then InputBox = Answers(Prompts.Count - 1)
  End Function
End Class

Function NewUserInterface(inputAnswers)
  Dim a, ui
  Set ui = New StandInUserInterface
  For Each a In inputAnswers
    ui.Answers.Add ui.Answers.Count, a
  Next
  Set NewUserInterface = ui
End Function
