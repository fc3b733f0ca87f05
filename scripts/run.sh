#!/usr/bin/env bash
# Installs what is needed, builds, and starts the app.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --parallel "$(nproc)"

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
    echo "No display found: starting the app in a virtual X server (Xvfb)."
    exec xvfb-run -a -s "-screen 0 1280x1024x24" build/src/tpcompanion "$@"
fi
exec build/src/tpcompanion "$@"
