#!/usr/bin/env bash
# Builds the project with warnings as errors and runs its whole test suite against Debian 13's
# Qt 6.8, the Qt the phone build uses, inside a chroot made with debootstrap from Debian's own
# packages. APIs deprecated in 6.8 are compiled out, so using one fails the build.
# The chroot is kept in build-qt68/root and reused; the sources are copied in fresh each run.
# Needs root (debootstrap, chroot, mount); uses sudo when not root.
# Usage: scripts/qt68-check.sh
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
chroot_dir=$root/build-qt68/root
mirror=http://deb.debian.org/debian

sudo=()
if [ "$(id -u)" -ne 0 ]; then
    sudo=(sudo)
fi

if ! command -v debootstrap >/dev/null; then
    "${sudo[@]}" apt-get update
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        debootstrap
fi

# The same packages scripts/deps.sh installs on Debian 12, less the fuzzing and display tools;
# Debian 13 ships Qt's SVG image plugin in a package of its own.
packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-declarative-dev qt6-declarative-dev-tools
    qt6-httpserver-dev qt6-websockets-dev qt6-svg-dev qt6-svg-plugins qt6-qpa-plugins libgl-dev
    libxkbcommon-dev
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
    qml6-module-qtquick-templates qml6-module-qtquick-window
    liblua5.4-dev lua-check libsimdjson-dev libicu-dev libcurl4-openssl-dev libgit2-dev
    fonts-dejavu-core
)

if [ ! -e "$chroot_dir/.ready" ]; then
    "${sudo[@]}" rm -rf "$chroot_dir"
    mkdir -p "$chroot_dir"
    echo "== debootstrap Debian 13 (trixie) into $chroot_dir"
    "${sudo[@]}" debootstrap --variant=minbase trixie "$chroot_dir" "$mirror" >"$root/build-qt68/debootstrap.log" 2>&1 ||
        { tail -30 "$root/build-qt68/debootstrap.log"; exit 1; }
fi

mounted=()
unmount_all() {
    local index
    for ((index = ${#mounted[@]} - 1; index >= 0; index--)); do
        "${sudo[@]}" umount -l "${mounted[$index]}" || true
    done
}
trap unmount_all EXIT
for fs in proc dev; do
    "${sudo[@]}" mount --rbind "/$fs" "$chroot_dir/$fs"
    mounted+=("$chroot_dir/$fs")
done

in_chroot() {
    "${sudo[@]}" chroot "$chroot_dir" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        LANG=C.UTF-8 QT_QPA_PLATFORM=offscreen "$@"
}

echo "== install Qt 6.8 and the build tools in the chroot"
install_packages() {
    in_chroot env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
        "${packages[@]}" >"$root/build-qt68/apt.log" 2>&1
}
if [ ! -e "$chroot_dir/.ready" ] || ! install_packages; then
    in_chroot apt-get update -q >"$root/build-qt68/apt-update.log" 2>&1
    install_packages || { tail -30 "$root/build-qt68/apt.log"; exit 1; }
    "${sudo[@]}" touch "$chroot_dir/.ready"
fi
in_chroot qmake6 -query QT_VERSION | sed 's/^/Qt in the chroot: /'

echo "== copy the sources"
"${sudo[@]}" rm -rf "$chroot_dir/project"
"${sudo[@]}" mkdir -p "$chroot_dir/project/src"
git ls-files -z | tar --null -T - -cf - | "${sudo[@]}" tar -xf - -C "$chroot_dir/project/src"

echo "== build and test with Qt 6.8"
jobs=$(nproc)
in_chroot cmake -S /project/src -B /project/build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTP_WERROR=ON -DCMAKE_CXX_FLAGS=-DQT_DISABLE_DEPRECATED_UP_TO=0x060800
in_chroot cmake --build /project/build --parallel "$jobs"
in_chroot ctest --test-dir /project/build --output-on-failure --parallel "$jobs"
