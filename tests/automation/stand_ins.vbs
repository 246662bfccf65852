' Stand-ins for the objects a payroll host hands the engine, recording what
' the engine does to them. Wine's VBScript takes one name per Public line.

Function NewList(): Set NewList = CreateObject("Scripting.Dictionary"): End Function

Sub Push(list, v): list.Add list.Count, v: End Sub

' A record set over rows(i)(j), fields names(j) of types(j), its own Fields.
' Written: each field written, with its last value, in the order first written.
Class StandInRecordSet
  Public Written
  Public Calls
  Public State
  Private names
  Private types
  Private data
  Private position

  Public Sub Init(fieldNames, fieldTypes, rows)
    names = fieldNames: types = fieldTypes: data = rows
    position = 0: State = 1: Set Written = NewList()
  End Sub

  Public Property Get Fields(): Set Fields = Me: End Property

  Public Property Get Count(): Count = UBound(names) + 1: End Property

  ' By 0-based position or by name, case-insensitively.
  Public Default Function Item(key)
    Dim j
    For j = 0 To UBound(names)
      If VarType(key) <> vbString And CStr(key) = CStr(j) Or UCase(key) = UCase(names(j)) Then Set Item = New StandInField: Item.Init Me, j, names(j): Exit Function
    Next
    Err.Raise 3265, "StandInRecordSet", "Item cannot be found in the collection: " & key
  End Function

  Public Property Get AbsolutePosition(): AbsolutePosition = position + 1: End Property

  Public Property Get BOF(): BOF = position < 0 Or UBound(data) < 0: End Property

  Public Property Get EOF(): EOF = position > UBound(data): End Property

  Private Sub MoveBy(blocked, n)
    If blocked Then Err.Raise 3021, "StandInRecordSet", "Either BOF or EOF is True"
    position = position + n
  End Sub

  Private Sub RequireRow(): MoveBy BOF Or EOF, 0: End Sub

  Public Function Cell(j): RequireRow: Cell = data(position)(j): End Function

  ' A database field converts what it is given to its type.
  Public Sub WriteCell(j, v)
    Dim row
    RequireRow: row = data(position): row(j) = Null
    If Not (IsNull(v) Or IsEmpty(v)) Then
      Select Case types(j)
        Case "String": row(j) = CStr(v)
        Case "Integer": row(j) = CInt(v)
        Case "Long": row(j) = CLng(v)
        Case "Double": row(j) = CDbl(v)
        Case "Currency": row(j) = CCur(v)
        Case "Date": row(j) = CDate(v)
        Case "Boolean": row(j) = CBool(v)
      End Select
    End If
    data(position) = row: Written(names(j)) = row(j)
  End Sub

  Public Sub Edit(): RequireRow: Calls = Calls & "Edit ": End Sub

  Public Sub Update(): RequireRow: Calls = Calls & "Update ": End Sub

  Public Sub MoveFirst(): position = 0: End Sub

  Public Sub MoveLast()
    If UBound(data) >= 0 Then position = UBound(data) Else position = 0
  End Sub

  Public Sub MoveNext(): MoveBy EOF, 1: End Sub

  Public Sub MovePrevious(): MoveBy BOF, -1: End Sub

  Public Sub Close(): State = 0: End Sub
End Class

Class StandInField
  Public Owner
  Public Column
  Public Name

  Public Sub Init(recordSet, j, fieldName): Set Owner = recordSet: Column = j: Name = fieldName: End Sub

  Public Default Property Get Value(): Value = Owner.Cell(Column): End Property

  Public Property Let Value(v): Owner.WriteCell Column, v: End Property
End Class

Function NewRecordSet(names, types, rows)
  Set NewRecordSet = New StandInRecordSet
  NewRecordSet.Init names, types, rows
End Function

' The host's database connection: it answers prepared SQL texts, logs every
' text in Received and one without an answer also in Unexpected (the error's
' description does not survive every automation layer). It is also the
' host's Parent (Connect) and the ObjectFactory of the connections the SQL
' functions open, which share its answers and logs.
Class StandInConnection
  Public Received
  Public Unexpected
  Public Prepared
  Public ConnectionString
  Public State
  Private hostString

  Private Sub Class_Initialize()
    Set Received = NewList(): Set Unexpected = NewList(): Set Prepared = NewList()
    ConnectionString = "Provider=KorvexStandIn": hostString = ConnectionString: State = 1
  End Sub

  Public Property Get Connect(): Set Connect = Me: End Property

  Public Sub Answer(sql, names, types, rows): Prepared(sql) = Array(names, types, rows): End Sub

  Public Function Execute(sql)
    Dim a
    Push Received, sql
    If Not Prepared.Exists(sql) Then Push Unexpected, sql: Err.Raise vbObjectError + 1001, "StandInConnection", "no answer for " & sql
    a = Prepared(sql)
    Set Execute = NewRecordSet(a(0), a(1), a(2))
  End Function

  Public Function CreateObject(className)
    If className <> "Connection" Then Err.Raise 429, "StandInConnection", "cannot create " & className
    Set CreateObject = New StandInConnection
    CreateObject.Share Me
  End Function

  Public Sub Share(host)
    Set Received = host.Received: Set Unexpected = host.Unexpected: Set Prepared = host.Prepared
    ConnectionString = "": State = 0
  End Sub

  Public Sub Open()
    If ConnectionString <> hostString Then Err.Raise vbObjectError + 1002, "StandInConnection", "not the host's connection string: " & ConnectionString
    State = 1
  End Sub

  Public Sub Close(): State = 0: End Sub
End Class

' A workbook, its own Worksheets; Writes logs e.g. "Sheet1!5,3 value Double 3.5".
Class StandInWorkbook
  Public Writes
  Public SheetNames
  Private stored

  Private Sub Class_Initialize(): Set Writes = NewList(): Set stored = NewList(): End Sub

  Public Property Get Worksheets(): Set Worksheets = Me: End Property

  Public Default Function Item(key)
    Dim i
    For i = 0 To UBound(SheetNames)
      If UCase(key) = UCase(SheetNames(i)) Or CStr(key) = CStr(i + 1) Then Set Item = NewRange(Me, SheetNames(i), i + 1, 1, 1): Exit Function
    Next
    Err.Raise 9, "StandInWorkbook", "Subscript out of range: " & key
  End Function

  Public Function Cell(key): Cell = stored(key): End Function

  Public Sub Store(key, v, logged): stored(key) = v: Push Writes, logged: End Sub
End Class

' A block of cells, or a whole sheet.
Class StandInRange
  Public Book
  Public Name
  Public Index
  Public Row
  Public Column
  Public Size

  Public Sub Init(b, n, i, r, c): Set Book = b: Name = n: Index = i: Row = r: Column = c: End Sub

  Public Property Get Cells(r, c): Set Cells = NewRange(Book, Name, Index, CLng(r), CLng(c)): End Property

  Public Function Resize(rows, columns)
    Set Resize = NewRange(Book, Name, Index, Row, Column)
    If rows * columns > 1 Then Resize.Size = " " & rows & "x" & columns
  End Function

  Private Property Get Key(): Key = Name & "!" & Row & "," & Column: End Property

  Public Default Property Get Value(): Value = Book.Cell(Key): End Property

  Public Property Let Value(v): Book.Store Key, v, Key & Size & " value " & Describe(v): End Property

  Public Property Get Formula(): Formula = Book.Cell(Key): End Property

  Public Property Let Formula(text): Book.Store Key, text, Key & Size & " formula " & text: End Property
End Class

Function NewRange(book, sheet, i, r, c): Set NewRange = New StandInRange: NewRange.Init book, sheet, i, r, c: End Function

' OK boxes answer 1, Yes/No boxes 6 (Yes); input boxes take the answers in
' turn, then are cancelled (Empty).
Class StandInUserInterface
  Public Messages
  Public Buttons
  Public Prompts
  Public Answers

  Private Sub Class_Initialize(): Set Messages = NewList(): Set Buttons = NewList(): Set Prompts = NewList(): End Sub

  Public Function MessageBox(text, buttonSet, title)
    Push Messages, text: Push Buttons, buttonSet
    MessageBox = 1
    If buttonSet = 4 Then MessageBox = 6
  End Function

  Public Function InputBox(prompt, title, defaultText)
    Push Prompts, prompt
    If Prompts.Count - 1 <= UBound(Answers) Then InputBox = Answers(Prompts.Count - 1)
  End Function
End Class

Function NewUserInterface(answers): Set NewUserInterface = New StandInUserInterface: NewUserInterface.Answers = answers: End Function
