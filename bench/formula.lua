-- The wage-formula benchmark in Lua with global variables: tax brackets,
-- rounding to fen, fixed-point text and the amount in Chinese capitals.

-- Half to even at `digits` decimals: scale, round the whole number, scale back.
function round(x, digits)
  local scale = 10 ^ digits
  local y = x * scale
  local f = math.floor(y)
  local diff = y - f
  if diff > 0.5 or (diff == 0.5 and f % 2 ~= 0) then f = f + 1 end
  return f / scale
end

digits = { "零", "壹", "贰", "叁", "肆", "伍", "陆", "柒", "捌", "玖" }
units = { "分", "角", "元", "拾", "佰", "仟", "万", "拾", "佰", "仟", "亿", "拾", "佰", "仟" }

-- Digit characters with their position units, zeros folded, as on a cheque.
function capitals(amount)
  if amount == 0 then return "零元整" end
  local negative = amount < 0
  if negative then amount = -amount end
  local fen = tostring(math.floor(amount * 100 + 0.5))
  local out = {}
  if negative then out[#out + 1] = "负" end
  local pendingZero = false
  local yiWritten = false
  local n = #fen
  for k = 1, n do
    local pos = n - k + 1
    local digit = string.byte(fen, k) - 48
    if digit == 0 then
      if pos == 11 then out[#out + 1] = "亿"; yiWritten = true end
      if pos == 7 and not yiWritten then out[#out + 1] = "万" end
      if pos == 3 then out[#out + 1] = "元" end
      if k == n then out[#out + 1] = "整" end
      pendingZero = true
    else
      if pendingZero then out[#out + 1] = "零" end
      out[#out + 1] = digits[digit + 1]
      if pos <= #units then out[#out + 1] = units[pos] end
      pendingZero = false
    end
  end
  return table.concat(out)
end

i = 0
taxTotal = 0
netTotal = 0
chars = 0
while i < 10000 do
  gross = 3000 + i * 9.37
  taxable = gross - 5000
  if taxable > 0 then
    tax = taxable * 0.03
  else
    tax = 0
  end
  if taxable > 3000 then
    tax = taxable * 0.1 - 210
  end
  if taxable > 12000 then
    tax = taxable * 0.2 - 1410
  end
  if taxable > 25000 then
    tax = taxable * 0.25 - 2660
  end
  if taxable > 35000 then
    tax = taxable * 0.3 - 4410
  end
  if taxable > 55000 then
    tax = taxable * 0.35 - 7160
  end
  if taxable > 80000 then
    tax = taxable * 0.45 - 15160
  end
  tax = round(tax, 2)
  net = round(gross - tax, 2)
  text = string.format("%.2f", net)
  caps = capitals(net)
  taxTotal = taxTotal + tax
  netTotal = netTotal + net
  chars = chars + utf8.len(text) + utf8.len(caps)
  i = i + 1
end
print(string.format("%.2f %.2f %d", taxTotal, netTotal, chars))
