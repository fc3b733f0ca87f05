#!/usr/bin/env bash
# Builds libcurl for the phone, on a Mac with Xcode: a static, HTTP-only library (no TLS,
# no other protocol, zlib from the iOS SDK), installed with its CMake package so that the
# app's configure step finds it:
#   scripts/build-curl-ios.sh CURL_SOURCE_DIR [PREFIX]
# CURL_SOURCE_DIR is an unpacked curl release (7.85 or later); PREFIX defaults to
# build-curl-ios/prefix. Then configure the app with -DCMAKE_PREFIX_PATH=PREFIX.
set -euo pipefail
if [ "$#" -lt 1 ] || [ "$#" -gt 2 ]; then
    sed -n '2,7p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
fi
exec "$(dirname "$0")/build-ios-static.sh" curl "$1" include/curl/curl.h \
    "${2:-build-curl-ios/prefix}" \
    -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DHTTP_ONLY=ON -DCURL_ENABLE_SSL=OFF \
    -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DUSE_LIBIDN2=OFF -DUSE_NGHTTP2=OFF \
    -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DCURL_ZLIB=ON -DENABLE_THREADED_RESOLVER=ON
