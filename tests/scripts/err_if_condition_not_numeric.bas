DIM s
s = "abc"
If s Then
End If