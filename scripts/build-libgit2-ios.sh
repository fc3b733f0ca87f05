#!/usr/bin/env bash
# Builds libgit2 for the phone, on a Mac with Xcode: a static library without network
# transports (the app's history is local), with its pkg-config file, so that the app's
# configure step finds it:
#   scripts/build-libgit2-ios.sh LIBGIT2_SOURCE_DIR [PREFIX]
# LIBGIT2_SOURCE_DIR is an unpacked libgit2 release (1.5 or later); PREFIX defaults to
# build-libgit2-ios/prefix. Then configure the app with PKG_CONFIG_PATH=PREFIX/lib/pkgconfig.
set -euo pipefail
if [ "$#" -lt 1 ] || [ "$#" -gt 2 ]; then
    sed -n '2,8p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
fi
source_dir=$1
prefix=${2:-build-libgit2-ios/prefix}
if [ ! -f "$source_dir/CMakeLists.txt" ] || [ ! -f "$source_dir/include/git2.h" ]; then
    echo "error: $source_dir is not an unpacked libgit2 release" >&2
    exit 1
fi

cmake -S "$source_dir" -B build-libgit2-ios/build -G Xcode \
    -DCMAKE_SYSTEM_NAME=iOS \
    -DCMAKE_OSX_ARCHITECTURES=arm64 \
    -DCMAKE_OSX_DEPLOYMENT_TARGET=15.0 \
    -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DBUILD_SHARED_LIBS=OFF \
    -DBUILD_TESTS=OFF \
    -DBUILD_CLI=OFF \
    -DUSE_SSH=OFF \
    -DUSE_HTTPS=OFF \
    -DUSE_BUNDLED_ZLIB=ON \
    -DREGEX_BACKEND=builtin
cmake --build build-libgit2-ios/build --config Release -- -sdk iphoneos
cmake --install build-libgit2-ios/build --config Release
echo "libgit2 for iOS is in $prefix"
