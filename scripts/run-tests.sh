#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test.
#
#   scripts/run-tests.sh [--asan | --tsan] [arguments of ctest]
#
# --asan builds with AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer, --tsan with ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh

preset=dev
case "${1:-}" in
    --asan) preset=asan; shift ;;
    --tsan) preset=tsan; shift ;;
    -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
esac

need_packages "${BUILD_PACKAGES[@]}" "${RUN_PACKAGES[@]}" "${TEST_PACKAGES[@]}"

echo "== Building (preset $preset)"
mkdir -p build
cmake --preset "$preset" >build/configure.log 2>&1 || { cat build/configure.log; exit 1; }
cmake --build --preset "$preset"

echo "== Testing"
ctest --preset "$preset" -j "$(nproc)" --no-tests=error "$@"
