#!/usr/bin/env bash
# Builds and installs as a packager does, without a preset, and looks at what came out.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh

need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
BUILD=$PWD/build/package

echo "== Building a release"
mkdir -p build
cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=Release >build/configure.log 2>&1 || { cat build/configure.log; exit 1; }
cmake --build "$BUILD" -j "$(nproc)"

echo "== What it is linked with and how it is hardened"
ctest --test-dir "$BUILD" -R '^Build\.' --no-tests=error --output-on-failure
rm -rf "$BUILD/staged"
DESTDIR=$BUILD/staged cmake --install "$BUILD" --prefix /usr >/dev/null
tests/Build/hardening.sh "$BUILD/compile_commands.json" "$BUILD"/staged/usr/bin/* "$BUILD"/staged/usr/lib/ipod-service/pictures.so
