#!/bin/sh
# Are programs and libraries of a release build hardened as cmake/Hardening.cmake wants them?
#
#     hardening.sh COMPILE_COMMANDS FILE...
#
# What leaves a trace in a file is read there; that every source was compiled so, off the commands.
set -eu

commands=$1
shift
failures=0

fail() {
    echo "$1" >&2
    failures=$((failures + 1))
}

# expect FILE OPTION_OF_READELF PATTERN WHAT
expect() {
    readelf -W "$2" "$1" | grep -qE "$3" || fail "$1: $4"
}

check_commands() {
    sources=$(grep -c '"file":' "$commands")
    for flag in -fstack-protector-strong -fstack-clash-protection -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS -fPI[CE]; do
        with=$(grep '"command":' "$commands" | grep -cE -e " $flag ") || true
        # A compiler for another processor may lack the one.
        if [ "$flag" = -fstack-clash-protection ] && [ "$with" = 0 ] && [ "$(uname -m)" != x86_64 ]; then
            continue
        fi
        [ "$with" = "$sources" ] || fail "$with of $sources sources are compiled with $flag"
    done
}

check_file() {
    expect "$1" -h 'Type: +DYN' "is not position-independent"
    expect "$1" -l 'GNU_RELRO' "has no segment that is read-only after relocation"
    expect "$1" -d '\(FLAGS(_1)?\).*(BIND_NOW|NOW)' "does not bind its functions at load"
    expect "$1" -l 'GNU_STACK.* RW ' "has an executable stack"
    expect "$1" --dyn-syms 'UND __stack_chk_fail' "has no stack protector"
    # The pictures' module is small, and has nothing that either would check.
    case $1 in
        */pictures.so) ;;
        *)
            expect "$1" --dyn-syms 'UND __[a-z]+_chk[@ ]' "calls no checked function of the C library"
            expect "$1" --dyn-syms 'UND _ZSt21__glibcxx_assert_fail' "has no assertions of the C++ library"
            ;;
    esac
    case $1 in
        *.so) ;;
        *) expect "$1" -d '\(FLAGS_1\).* PIE' "is no position-independent executable" ;;
    esac
}

check_commands
for file; do
    check_file "$file"
done
[ "$failures" = 0 ]
