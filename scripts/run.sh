#!/usr/bin/env bash
# Installs what is needed, builds, and starts the app. When nothing listens on
# 127.0.0.1:8090, the development engine is started first on a copy of the sample scripts
# and stopped again when the app exits.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --parallel "$(nproc)" --target tpcompanion tp-devengine

data_dir="${XDG_DATA_HOME:-$HOME/.local/share}/TPCompanion"
scripts_dir="$data_dir/scripts"
mkdir -p "$data_dir"
if [ ! -d "$scripts_dir" ]; then
    cp -r tools/devengine/samples "$scripts_dir"
    echo "Copied the sample scripts to $scripts_dir"
fi

engine_listening() { (exec 3<>/dev/tcp/127.0.0.1/8090) 2>/dev/null; }

if engine_listening; then
    echo "An engine already listens on 127.0.0.1:8090; using it."
else
    build/tools/devengine/tp-devengine --root "$scripts_dir" --port 8090 >"$data_dir/devengine.log" 2>&1 &
    engine_pid=$!
    trap 'kill "$engine_pid" 2>/dev/null || true; wait "$engine_pid" 2>/dev/null || true' EXIT
    for _ in $(seq 50); do
        engine_listening && break
        kill -0 "$engine_pid" 2>/dev/null || { cat "$data_dir/devengine.log"; exit 1; }
        sleep 0.1
    done
    echo "Development engine on http://127.0.0.1:8090 serving $scripts_dir (log: $data_dir/devengine.log)"
fi

# On a desktop the device-name file lives in the app's data folder, not under /var/jb.
app=(build/src/app/tpcompanion --owner-root "$data_dir/owner" "$@")
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
    echo "No display found: running the app in a virtual X server (Xvfb); nothing will be visible."
    app=(xvfb-run -a -s "-screen 0 1280x1024x24" "${app[@]}")
fi
"${app[@]}"
