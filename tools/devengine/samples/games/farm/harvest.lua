-- Walks a 3 x 3 grid of fields and taps each one.
local fields = {}
for row = 0, 2 do
    for column = 0, 2 do
        fields[#fields + 1] = {200 + column * 300, 600 + row * 300}
    end
end
for index, field in ipairs(fields) do
    tap(field[1], field[2])
    print(string.format("field %d harvested", index))
    sleep(150)
end
