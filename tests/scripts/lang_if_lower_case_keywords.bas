DIM n
if 1 = 1 then
n = 1
end if