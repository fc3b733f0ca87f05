#!/usr/bin/env bash
# Builds a library the phone lacks, on a Mac with Xcode, with the library's own CMake: a
# static arm64 build for iOS 15 or later, installed into PREFIX.
#   scripts/build-ios-static.sh NAME SOURCE_DIR MARKER_FILE PREFIX [CMAKE_OPTION...]
# MARKER_FILE is a file SOURCE_DIR must hold to be an unpacked release of NAME. Called by
# build-curl-ios.sh and build-libgit2-ios.sh with their options.
set -euo pipefail
if [ "$#" -lt 4 ]; then
    sed -n '2,7p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
fi
name=$1
source_dir=$2
marker=$3
prefix=$4
shift 4
if [ ! -f "$source_dir/CMakeLists.txt" ] || [ ! -f "$source_dir/$marker" ]; then
    echo "error: $source_dir is not an unpacked $name release" >&2
    exit 1
fi
build=build-$name-ios/build
cmake -S "$source_dir" -B "$build" -G Xcode \
    -DCMAKE_SYSTEM_NAME=iOS \
    -DCMAKE_OSX_ARCHITECTURES=arm64 \
    -DCMAKE_OSX_DEPLOYMENT_TARGET=15.0 \
    -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DBUILD_SHARED_LIBS=OFF \
    "$@"
cmake --build "$build" --config Release -- -sdk iphoneos
cmake --install "$build" --config Release
echo "$name for iOS is in $prefix"
