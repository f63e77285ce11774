#!/usr/bin/env bash
# Checks that need no test: format, vocabulary, types, and a clang build with clang-tidy over the service's rooms.
#
#   scripts/check-style.sh [format | vocabulary | types | clang | tidy [FILE...]]
#
# Without a word all five, in that order. "types" is mypy over the kit and bench/. "clang" builds everything with the preset
# of that name: warnings are errors, and so is a breach of the rules which thread may call what under which lock.
# "tidy" looks at the service's rooms and their tests, or at the files named.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh

# The rooms that keep the style of .clang-tidy.
ROOMS='(ServiceUtil|JsonRpc|PictureModule|IpodService)/[^/]+|tests/(ServiceUtil|JsonRpc|IpodService)/[^/]+'

check_format() {
    echo "== clang-format over everything"
    git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format-14 --dry-run -Werror
}

# A number where DeviceManager/DeviceManagerValues.h has a name: what an event, a result, a device or a category is.
check_vocabulary() {
    echo "== Names for the device manager's values"
    local number='(0[xX][0-9a-fA-F]+|[0-9]+)[uU]?\b'
    local patterns=(
        "\bId\(\) *[!=]= *$number"
        "\b(event(Id)?|words\[0\]|result|category|deviceType|playStatus) *[!=]= *$number"
        "\bFire\(\{ *$number"
        "\b(Answering|IsSuccess|ResultName|EventName)\( *$number"
        "\beDev[mM]gr[A-Za-z]+\([^;{]*\) *[!=]= *$number"
        "\beDev[mM]gr[A-Za-z]+\([^;{]*\), *$number *\)"
    )
    local pattern found=0
    for pattern in "${patterns[@]}"; do
        if git grep --untracked -nP -e "$pattern" -- IpodService bench stress tests/IpodService tests/EndToEnd; then
            found=1
        fi
    done
    [ $found = 0 ] || { echo "These have names in DeviceManager/DeviceManagerValues.h." >&2; return 1; }
}

check_types() {
    echo "== mypy over the kit and bench/"
    (cd kit && mypy --cache-dir=/dev/null .)
    mypy --strict --cache-dir=/dev/null bench/report.py
}

configure_clang() {
    need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CHECK_PACKAGES[@]}" "${BENCH_PACKAGES[@]}"
    mkdir -p build
    cmake --preset clang >build/configure.log 2>&1 || { cat build/configure.log; return 1; }
}

check_clang() {
    echo "== Building with clang"
    configure_clang
    cmake --build --preset clang
}

check_tidy() {
    echo "== clang-tidy over the service's rooms"
    configure_clang
    local files=("$@")
    if [ ${#files[@]} = 0 ]; then
        mapfile -t files < <(git ls-files -co --exclude-standard '*.cpp' | grep -E "^($ROOMS)$")
    fi
    printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy-14 --quiet -p build/clang
}

case "${1:-all}" in
    format) need_packages "${CHECK_PACKAGES[@]}"; check_format ;;
    vocabulary) check_vocabulary ;;
    types) need_packages "${CHECK_PACKAGES[@]}" "${TEST_PACKAGES[@]}"; check_types ;;
    clang) check_clang ;;
    tidy) shift; check_tidy "$@" ;;
    all) need_packages "${CHECK_PACKAGES[@]}" "${TEST_PACKAGES[@]}"; check_format; check_vocabulary; check_types; check_clang; check_tidy ;;
    -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0" ;;
    *) echo "scripts/check-style.sh knows no check named $1" >&2; exit 2 ;;
esac
