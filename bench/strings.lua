-- The string-building benchmark in Lua with global variables.
i = 0
s = ""
n = 0
while i < 200000 do
  c = string.sub("abcdefghij", i % 10 + 1, i % 10 + 1)
  s = s .. c
  if #s > 40 then
    s = string.sub(s, 11)
  end
  t = string.upper(string.sub(s, 1, 5)) .. string.sub(s, -2)
  n = n + #t
  i = i + 1
end
print(i, n, s)
