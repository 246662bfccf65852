DIM s, r
s = "1"
If s Then r = r & "s"
If -1 Then
r = r & "t"
Else
r = r & "e"
End If
