# A private file system for a program that writes to fixed paths. Sourced by the scripts.

# Fills the array SANDBOX with a bubblewrap command line up to the "--": system folders read-only, `/`, /tmp and
# /home private. `home` is the folder of the machine that stands as /home/root inside; the other arguments are
# added as they are.
make_sandbox() {
    local home=$1
    shift
    SANDBOX=(
        bwrap --unshare-user --uid 0 --gid 0 --unshare-ipc --die-with-parent --new-session
        --ro-bind /usr /usr --symlink usr/bin /bin --symlink usr/sbin /sbin
        --symlink usr/lib /lib --symlink usr/lib64 /lib64
        --ro-bind /etc /etc --dev /dev --proc /proc --tmpfs /tmp --bind "$home" /home/root
        "$@"
    )
}

# False where the machine refuses user namespaces. Takes the SANDBOX made before.
sandbox_works() {
    "${SANDBOX[@]}" -- /bin/true 2>/dev/null
}
