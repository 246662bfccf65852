-- The run-loop benchmark in Lua with global variables, for comparison.
i = 0
s = 0
t = ""
while i < 1000000 do
  s = s + i * 2
  if s > 1000000000 then
    s = s - 1000000000
  end
  t = string.sub("abcdef", 1, 3)
  i = i + 1
end
print(i, s, t)
