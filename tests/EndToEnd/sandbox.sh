#!/bin/sh
# Runs a command where the service can do no harm: "sandbox.sh COMMAND [ARGUMENT...]".
#
# Inside, / and /home/root are empty, private and writable, and the network is a loopback of its own, so that
# port 8883 is free and several sandboxes run side by side. The source tree can be read, and the build folder
# written: SANDBOX_BUILD, else the nearest folder above COMMAND that holds a CMakeCache.txt. Folders in SANDBOX_SHOW,
# with ":" between them, can be read as well. COMMAND's exit status is passed on.
# Signals sent to this script are not: what sends them has to run inside.
#
# Status 77, with the reason on standard output, where the system refuses the namespaces.
set -eu

source_root=$(cd "$(dirname "$0")/../.." && pwd -P)
command_path=$(readlink -f "$(command -v "${1:?COMMAND is missing}")")
build_folder=${SANDBOX_BUILD:-$(dirname "$command_path")}
while [ "$build_folder" != / ] && [ ! -e "$build_folder/CMakeCache.txt" ]; do
    build_folder=$(dirname "$build_folder")
done

skip() {
    echo "skipped: $1"
    exit 77
}

isolated() {
    bwrap --unshare-user --uid 0 --gid 0 --unshare-net --unshare-pid --unshare-ipc --die-with-parent \
        --new-session --ro-bind /usr /usr --symlink usr/bin /bin --symlink usr/sbin /sbin \
        --symlink usr/lib /lib --symlink usr/lib64 /lib64 --ro-bind /etc /etc --dev /dev --proc /proc \
        --tmpfs /tmp --dir /home/root "$@"
}

command -v bwrap >/dev/null || skip "bubblewrap (bwrap) is not installed"
reason=$(isolated -- /bin/true 2>&1) || skip "namespaces are refused here: $reason"

# The developer's own player stays outside.
for name in $(env | sed -n 's/^\(DEVICE_SIMULATOR_[A-Z_]*\)=.*/\1/p'); do
    unset "$name"
done

shift
set -- -- "$command_path" "$@"
if [ "$build_folder" != / ]; then
    # A private root has no GStreamer registry; one that stays saves every start a scan of the plugins.
    set -- --bind "$build_folder" "$build_folder" \
        --setenv GST_REGISTRY "$build_folder/gstreamer-registry.bin" "$@"
fi
IFS=:
for folder in ${SANDBOX_SHOW-}; do
    set -- --ro-bind "$folder" "$folder" "$@"
done
unset IFS
# Whole stacks, so that what a library left when it was loaded can be told apart; g++ 12's LeakSanitizer falls over the
# thread's data of libraries that were loaded later.
leaks="print_suppressions=0:suppressions=$source_root/tests/lsan.supp"
# A second signal ends the service at once, without a join: no leak of a thread, for ThreadSanitizer.
isolated --ro-bind "$source_root" "$source_root" --chdir / --setenv HOME /home/root \
    --setenv ASAN_OPTIONS "${ASAN_OPTIONS-}:fast_unwind_on_malloc=0:intercept_tls_get_addr=0" \
    --setenv LSAN_OPTIONS "$leaks" --setenv TSAN_OPTIONS "${TSAN_OPTIONS-}:report_thread_leaks=0" --setenv IPOD_TEST_SANDBOX 1 "$@"
