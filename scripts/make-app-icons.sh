#!/usr/bin/env bash
# Renders packaging/ios/AppIcon.svg into the phone's app icon set
# (packaging/ios/Assets.xcassets/AppIcon.appiconset). Run it after changing the SVG and
# commit the result; a test checks that the committed pictures match the SVG.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --target tp-iconset
QT_QPA_PLATFORM=offscreen build/tools/iconset/tp-iconset packaging/ios/AppIcon.svg \
    packaging/ios/Assets.xcassets/AppIcon.appiconset
