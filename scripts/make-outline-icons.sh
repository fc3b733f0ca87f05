#!/usr/bin/env bash
# Writes the filled outline of every drawn icon (src/*/icons/drawn/NAME.svg) to the icon the
# module ships (src/*/icons/NAME.svg). Run it after changing a drawing and commit the result;
# a test checks that each shipped icon draws what its drawing draws.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --target tp-iconoutline
for drawn in src/*/icons/drawn/*.svg; do
    QT_QPA_PLATFORM=offscreen build/tools/iconoutline/tp-iconoutline "$drawn" \
        "$(dirname "$(dirname "$drawn")")/$(basename "$drawn")"
done
