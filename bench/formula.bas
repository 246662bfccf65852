' A wage formula over 10,000 gross amounts: the monthly tax by brackets, the
' net amount rounded to fen, written as text and in Chinese capitals.
Dim i, gross, taxable, tax, net, text, capitals, taxTotal, netTotal, chars
i = 0
taxTotal = 0
netTotal = 0
chars = 0
Do While i < 10000
  gross = 3000 + i * 9.37
  taxable = gross - 5000
  If taxable > 0 Then
    tax = taxable * 0.03
  Else
    tax = 0
  End If
  If taxable > 3000 Then
    tax = taxable * 0.1 - 210
  End If
  If taxable > 12000 Then
    tax = taxable * 0.2 - 1410
  End If
  If taxable > 25000 Then
    tax = taxable * 0.25 - 2660
  End If
  If taxable > 35000 Then
    tax = taxable * 0.3 - 4410
  End If
  If taxable > 55000 Then
    tax = taxable * 0.35 - 7160
  End If
  If taxable > 80000 Then
    tax = taxable * 0.45 - 15160
  End If
  tax = Round(tax, 2)
  net = Round(gross - tax, 2)
  text = Format(net, "0.00")
  capitals = Num2Chinese(net)
  taxTotal = taxTotal + tax
  netTotal = netTotal + net
  chars = chars + Len(text) + Len(capitals)
  i = i + 1
Loop
