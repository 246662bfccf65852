If 1 > 0 Then
MsgBox 1
EndIf
