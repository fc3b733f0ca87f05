-- Keeps tapping until it is stopped (run it again, or stop the engine).
local count = 0
while true do
    tap(100, 100)
    count = count + 1
    if count % 10 == 0 then
        print("still tapping: " .. count)
    end
    sleep(500)
end
