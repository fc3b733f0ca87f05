#!/usr/bin/env bash
# Installs the Debian 12 packages the app, its development engine and its tests need, and
# any further packages named as arguments (a maintenance script's own tools).
# Idempotent: when every package is already installed it only checks and returns.
set -euo pipefail

packages=(
    # build tools
    cmake ninja-build g++ clang-format pkg-config
    # Qt 6.4: core, network, QML and Qt Quick Controls, HTTP server, SVG icons
    qt6-base-dev qt6-base-dev-tools qt6-declarative-dev qt6-declarative-dev-tools
    qt6-httpserver-dev qt6-websockets-dev qt6-svg-dev qt6-qpa-plugins libgl-dev libxkbcommon-dev
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
    qml6-module-qtquick-templates qml6-module-qtquick-window
    # Lua 5.4: the development engine runs scripts, the editor checks their syntax
    liblua5.4-dev
    # luacheck, the Lua linter: pure Lua modules the build carries as resources
    lua-check
    # large script listings are read with simdjson's on-demand parser
    libsimdjson-dev
    # the engine client speaks HTTP through libcurl
    libcurl4-openssl-dev
    # every version of a script read or saved is kept in a local git repository
    libgit2-dev
    # names are sorted with ICU's full Unicode case folding (the ICU Qt itself links)
    libicu-dev
    # the fuzz targets: clang with libFuzzer and the sanitizer runtimes
    clang libclang-rt-14-dev
    # running without a display, and fonts for Vietnamese text and the row icons
    xvfb xauth fonts-dejavu-core fonts-noto-color-emoji
    "$@"
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi

sudo=()
if [ "$(id -u)" -ne 0 ]; then
    sudo=(sudo)
fi
echo "Installing: ${missing[*]}"
"${sudo[@]}" apt-get update
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
