Do While 1
Exit Do
End If
Loop
