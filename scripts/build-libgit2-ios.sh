#!/usr/bin/env bash
# Builds libgit2 for the phone, on a Mac with Xcode: a static library without network
# transports (the app's history is local), with its pkg-config file, so that the app's
# configure step finds it:
#   scripts/build-libgit2-ios.sh LIBGIT2_SOURCE_DIR [PREFIX]
# LIBGIT2_SOURCE_DIR is an unpacked libgit2 release (1.5 or later); PREFIX defaults to
# build-libgit2-ios/prefix. Then configure the app with PKG_CONFIG_PATH=PREFIX/lib/pkgconfig.
set -euo pipefail
if [ "$#" -lt 1 ] || [ "$#" -gt 2 ]; then
    sed -n '2,7p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
fi
exec "$(dirname "$0")/build-ios-static.sh" libgit2 "$1" include/git2.h \
    "${2:-build-libgit2-ios/prefix}" \
    -DBUILD_TESTS=OFF -DBUILD_CLI=OFF -DUSE_SSH=OFF -DUSE_HTTPS=OFF -DUSE_BUNDLED_ZLIB=ON \
    -DREGEX_BACKEND=builtin
