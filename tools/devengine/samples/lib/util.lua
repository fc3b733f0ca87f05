-- Small helpers shared by the other scripts.
local util = {}

function util.tapAll(points, pauseMs)
    for _, point in ipairs(points) do
        tap(point[1], point[2])
        sleep(pauseMs or 100)
    end
end

function util.clamp(value, low, high)
    return math.max(low, math.min(high, value))
end

return util
