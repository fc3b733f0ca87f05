#!/usr/bin/env bash
# Installs what is needed, checks the formatting, builds with warnings as errors, lints the
# views with qmllint and runs every test; then builds again with AddressSanitizer and
# UndefinedBehaviorSanitizer (leaks reported) and runs every test once more; fuzzes each
# target briefly; and finally builds and tests everything against Debian 13's Qt 6.8 in a
# chroot.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

scripts/deps.sh

echo "== clang-format"
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

jobs=$(nproc)
export QT_QPA_PLATFORM=offscreen

echo "== build and test"
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTP_WERROR=ON
cmake --build build --parallel "$jobs"
echo "== qmllint"
cmake --build build --target all_qmllint
ctest --test-dir build --output-on-failure --parallel "$jobs"

echo "== build and test with AddressSanitizer and UndefinedBehaviorSanitizer"
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTP_WERROR=ON -DTP_SANITIZE=ON
cmake --build build-asan --parallel "$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
LSAN_OPTIONS="suppressions=$root/tests/lsan.supp:print_suppressions=0" \
UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    ctest --test-dir build-asan --output-on-failure --parallel "$jobs"

echo "== fuzz each target for a short time"
scripts/fuzz.sh 30

echo "== build and test with Qt 6.8 (Debian 13, in a chroot)"
scripts/qt68-check.sh
