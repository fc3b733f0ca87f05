-- Greets, then taps the middle
-- of the screen three times.
print("Xin chào from TP Companion")
for i = 1, 3 do
    tap(540, 960)
    sleep(200)
    print("tap " .. i .. " done")
end
