#!/usr/bin/env bash
# Checks packaging/rootless/build-deb.sh on a stub bundle (an Info.plist and a placeholder
# executable): the unsigned package's fields, contents and maintainer scripts, and the
# refusal without ldid. Usage: test_build_deb.sh REPOSITORY_ROOT
set -euo pipefail
root=$1
script="$root/packaging/rootless/build-deb.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
check() {
    local what=$1
    shift
    if "$@"; then
        echo "PASS   : $what"
    else
        echo "FAIL!  : $what"
        failures=$((failures + 1))
    fi
}

app="$work/TPCompanion.app"
mkdir -p "$app"
cat >"$app/Info.plist" <<'PLIST'
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleExecutable</key><string>TPCompanion</string></dict></plist>
PLIST
printf '#!/bin/sh\n' >"$app/TPCompanion"
chmod +x "$app/TPCompanion"

# A PATH without ldid, whatever the machine has.
bin="$work/bin"
mkdir -p "$bin"
for tool in bash sh sed grep cp mkdir mktemp rm chmod cat dirname dpkg-deb tar gzip xz zstd find; do
    if command -v "$tool" >/dev/null; then
        ln -s "$(command -v "$tool")" "$bin/$tool"
    fi
done

out="$work/out"
refused=0
PATH="$bin" "$script" "$app" "$out" >"$work/refusal.log" 2>&1 || refused=$?
check "without ldid and without --unsigned it fails" test "$refused" -ne 0
check "the refusal says why" grep -q "ldid not found" "$work/refusal.log"
check "the refusal writes nothing" test ! -e "$out"

package=$(PATH="$bin" "$script" --unsigned "$app" "$out" 2>"$work/unsigned.log")
check "--unsigned builds a package" test -f "$package"
check "--unsigned says the package is unsigned" grep -q "UNSIGNED" "$work/unsigned.log"

info=$(dpkg-deb --info "$package")
for field in "Package: com.tpcompanion.tpcompanion" "Name: TP Companion" "Version: " \
    "Architecture: iphoneos-arm64" "Maintainer: " "Section: " "Description: " "Depends: "; do
    check "the control file has $field" grep -q "^ $field" <<<"$info"
done
version=$(sed -n 's/^project(TPCompanion VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
check "the version is the project's ($version)" grep -q "^ Version: $version\$" <<<"$info"

contents=$(dpkg-deb --contents "$package" | awk '{print $NF}')
check "the bundle is under /var/jb/Applications" \
    grep -q '^\./var/jb/Applications/TPCompanion\.app/Info\.plist$' <<<"$contents"
check "the executable is in the bundle" \
    grep -q '^\./var/jb/Applications/TPCompanion\.app/TPCompanion$' <<<"$contents"
check "every file is under the bundle" \
    bash -c '! grep -v -e "^\./$" -e "^\./var/$" -e "^\./var/jb/$" -e "^\./var/jb/Applications/$" \
        -e "^\./var/jb/Applications/TPCompanion\.app/" <<<"$1"' _ "$contents"

check "the package depends on no libcurl: the app carries its own" \
    bash -c '! grep -qi "^ Depends:.*curl" <<<"$1"' _ "$info"

# An executable that loads libcurl from the system is refused.
dynamic="$work/Dynamic.app"
cp -R "$app" "$dynamic"
printf 'MACHO\0@rpath/libcurl.4.dylib\0' >"$dynamic/TPCompanion"
dynamic_refused=0
PATH="$bin" "$script" --unsigned "$dynamic" "$work/dynamic-out" >"$work/dynamic.log" 2>&1 ||
    dynamic_refused=$?
check "an executable that loads a libcurl dylib is refused" test "$dynamic_refused" -ne 0
check "the refusal names the static libcurl" grep -q "build-curl-ios.sh" "$work/dynamic.log"
check "the refusal writes nothing" test ! -e "$work/dynamic-out"

dpkg-deb --control "$package" "$work/control"
for script_name in postinst postrm; do
    check "$script_name is executable" test -x "$work/control/$script_name"
    check "$script_name refreshes the home screen for the bundle" \
        grep -q "uicache .* /var/jb/Applications/TPCompanion.app" "$work/control/$script_name"
done

if [ "$failures" -ne 0 ]; then
    echo "$failures checks failed"
    exit 1
fi
