#!/usr/bin/env bash
# Packages a built TPCompanion.app for a rootless jailbroken phone:
#   packaging/rootless/build-deb.sh [--unsigned] APP_DIR [OUT_DIR]
# The bundle is installed at /var/jb/Applications/TPCompanion.app. It is signed with
# `ldid -S<entitlements>` (packaging/ios/TPCompanion.entitlements); without ldid the script
# refuses, unless --unsigned is given, and then says that the package is unsigned.
# The package is written to OUT_DIR (default: the current folder) and its path printed.
# The app carries its own static libcurl (docs/ios.md), so the package depends on no
# libcurl of the jailbreak's; an executable that loads a libcurl dylib is refused.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
entitlements="$here/../ios/TPCompanion.entitlements"
version_file="$here/../../CMakeLists.txt"

unsigned=false
arguments=()
for argument in "$@"; do
    case "$argument" in
        --unsigned) unsigned=true ;;
        -h|--help)
            sed -n '2,9p' "$0" | sed 's/^# \{0,1\}//'
            exit 0
            ;;
        *) arguments+=("$argument") ;;
    esac
done
if [ "${#arguments[@]}" -lt 1 ] || [ "${#arguments[@]}" -gt 2 ]; then
    echo "usage: $0 [--unsigned] APP_DIR [OUT_DIR]" >&2
    exit 2
fi
app_dir=${arguments[0]}
out_dir=${arguments[1]:-.}

if [ ! -f "$app_dir/Info.plist" ]; then
    echo "error: $app_dir is not an app bundle (no Info.plist)" >&2
    exit 1
fi
if ! command -v ldid >/dev/null && [ "$unsigned" != true ]; then
    echo "error: ldid not found, so the bundle cannot be signed with its entitlements." >&2
    echo "Install ldid, or pass --unsigned to build an unsigned package (it will not launch" >&2
    echo "on a phone until signed). Nothing was written." >&2
    exit 1
fi
if ! command -v dpkg-deb >/dev/null; then
    echo "error: dpkg-deb not found (Debian's dpkg package). Nothing was written." >&2
    exit 1
fi

executable=$(sed -n '/<key>CFBundleExecutable<\/key>/{n;s/.*<string>\(.*\)<\/string>.*/\1/p}' \
    "$app_dir/Info.plist")
executable=${executable:-TPCompanion}
if grep -q -a 'libcurl[.0-9]*\.dylib' "$app_dir/$executable"; then
    echo "error: $app_dir/$executable loads a libcurl dylib, which the phone may not have." >&2
    echo "Build it against the static libcurl of scripts/build-curl-ios.sh (docs/ios.md)." >&2
    echo "Nothing was written." >&2
    exit 1
fi

version=$(sed -n 's/^project(TPCompanion VERSION \([0-9.]*\).*/\1/p' "$version_file")
architecture=iphoneos-arm64
package=com.tpcompanion.tpcompanion
install_path=/var/jb/Applications/TPCompanion.app

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
mkdir -p "$stage/root$(dirname "$install_path")" "$stage/root/DEBIAN"
cp -R "$app_dir" "$stage/root$install_path"

if [ "$unsigned" = true ] && ! command -v ldid >/dev/null; then
    echo "warning: building an UNSIGNED package: sign it with ldid -S$entitlements before use" >&2
else
    ldid -S"$entitlements" "$stage/root$install_path/$executable"
fi

cat >"$stage/root/DEBIAN/control" <<CONTROL
Package: $package
Name: TP Companion
Version: $version
Architecture: $architecture
Maintainer: TP Companion developers <dev@tpcompanion.com>
Section: Utilities
Depends: firmware (>= 15.0)
Description: Touch front end of the Lua touch-automation engine
 Browse, edit and run the engine's scripts, set its options and name the device.
CONTROL

# The home screen learns of the app (or forgets it) by refreshing its cache for the path.
for script in postinst postrm; do
    cat >"$stage/root/DEBIAN/$script" <<SCRIPT
#!/bin/sh
if command -v uicache >/dev/null 2>&1; then
    uicache -p $install_path || true
fi
exit 0
SCRIPT
    chmod 0755 "$stage/root/DEBIAN/$script"
done
sed -i "s|uicache -p $install_path|uicache -u $install_path|" "$stage/root/DEBIAN/postrm"

mkdir -p "$out_dir"
output="$out_dir/${package}_${version}_${architecture}.deb"
dpkg-deb --root-owner-group -Zgzip --build "$stage/root" "$output" >/dev/null
echo "$output"
