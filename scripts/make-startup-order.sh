#!/usr/bin/env bash
# Writes src/app/startup-order.ld, the linker script that gathers what the app runs and reads
# from its start to its first screen at rest ahead of the rest of its code and constants.
# It runs the app under callgrind against the development engine and the sample scripts, so
# 127.0.0.1:8090 must be free. Run it after changing what the first screen does, and commit
# the result; tp-bench-startup shows what it saves.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh valgrind
# The app is profiled as linked without the script: valgrind names no function in the
# sections the script makes.
build=build-unordered
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTP_BUILD_TESTS=OFF \
    -DTP_STARTUP_ORDER=OFF
cmake --build "$build" --target tpcompanion tp-devengine

work=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -p "$work/owner/var/tmp" "$work/scripts"
printf 'Startup order' > "$work/owner/var/tmp/tapper_owner.txt"
cp -R tools/devengine/samples/. "$work/scripts"

"$build/tools/devengine/tp-devengine" --root "$work/scripts" --port 8090 > "$work/engine.log" 2>&1 &
pids+=($!)
QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=qt.qml.import=true \
    XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache" \
    valgrind --tool=callgrind --demangle=no --callgrind-out-file="$work/calls" \
    "$build/src/app/tpcompanion" --owner-root "$work/owner" > "$work/app.log" 2>&1 &
app=$!
pids+=("$app")

# The first screen is at rest once its listing has come and its rows are drawn, which takes
# a few seconds under callgrind; 30 s leaves room on a slow machine.
for _ in $(seq 120); do
    grep -q "GET /scripts " "$work/engine.log" && break
    sleep 1
done
if ! grep -q "GET /scripts " "$work/engine.log"; then
    echo "the app never asked the engine for its listing" >&2
    exit 1
fi
sleep 30
callgrind_control --dump "$app" > /dev/null
kill "$app"
wait "$app" 2>/dev/null || true

awk -f scripts/startup-order.awk "$work"/calls.* "$work/app.log" > "$work/startup-order.ld"
# A profile that missed the first screen would make a script that gathers nothing.
if ! grep -q "TPScriptsListVC" "$work/startup-order.ld"; then
    echo "the profile holds none of the first screen's functions" >&2
    exit 1
fi
mv "$work/startup-order.ld" src/app/startup-order.ld
echo "wrote src/app/startup-order.ld"
