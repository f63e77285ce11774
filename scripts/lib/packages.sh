# Debian packages that the project needs, and how they get onto the machine. Sourced by the scripts.

BUILD_PACKAGES=(
    g++ cmake ninja-build pkg-config
    libjsoncpp-dev libglib2.0-dev libgstreamer1.0-dev libvips-dev     # the service
    libtag1-dev libpng-dev libturbojpeg0-dev libasound2-dev libicu-dev # the simulated player
    libcli11-dev libncurses-dev                                       # the command-line programs
)
RUN_PACKAGES=(bubblewrap gstreamer1.0-alsa gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav)
TEST_PACKAGES=(libgtest-dev libgmock-dev tmux python3-pytest python3-jsonschema)
BENCH_PACKAGES=(libbenchmark-dev libjpeg-dev)
CHECK_PACKAGES=(clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev git mypy)

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

package_is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs what is missing of the packages named, and says what it does.
need_packages() {
    local missing=() package
    for package in "$@"; do
        package_is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return 0
    if ! command -v apt-get >/dev/null; then
        echo "This machine has no apt-get. Install what stands for these Debian packages: ${missing[*]}" >&2
        return 1
    fi
    echo "== Installing with apt-get: ${missing[*]}"
    as_root apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
