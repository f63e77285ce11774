#!/usr/bin/env bash
# Starts the service over a simulated player, shows a short session, opens the player view (on a terminal) and
# stays up until Ctrl-C.
#
#   scripts/run-demo.sh [--unconfined] [--sound-card] [--no-view] [FOLDER]
#
# FOLDER holds the music of the player (mp3, m4a, flac, ogg, opus, with tags); without it a few files are made.
# The service runs in a private file system and is reached on 127.0.0.1:8883. --unconfined runs it on the machine's
# own file system, where it writes /home/root/ipod.log and deletes files: see below. --sound-card plays to this
# machine's sound card instead of to a file. --no-view leaves the player view out.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh
. scripts/lib/sandbox.sh

BUILD=$PWD/build/demo
CTL=$BUILD/IpodControl/ipodctl
STATE=$BUILD/state # what the demo writes: the service's /home/root, the music that it makes
PORT=8883

# The simulated sound card: what the player sends, what came out of the unit.
export ALSA_CONFIG_PATH=$BUILD/DeviceSimulator/card/asound.conf DEVICE_SIMULATOR_AUDIO=$STATE/sound

confined=yes
sound_card=no
view=yes
music=
service= # process to signal
watcher= # of notifications
shell_job=

usage() { sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; }

parse_arguments() {
    while [ $# -gt 0 ]; do
        case $1 in
            --unconfined) confined=no ;;
            --sound-card) sound_card=yes ;;
            --no-view) view=no ;;
            -h | --help) usage; exit 0 ;;
            -*) usage >&2; exit 2 ;;
            *) music=$1 ;;
        esac
        shift
    done
    if [ -n "$music" ] && [ ! -d "$music" ]; then
        echo "There is no folder $music" >&2
        exit 2
    fi
}

build() {
    need_packages "${BUILD_PACKAGES[@]}" "${RUN_PACKAGES[@]}"
    echo "== Building the service and the simulated player"
    mkdir -p "$STATE/home"
    cmake --preset demo >"$BUILD/configure.log" 2>&1 || { cat "$BUILD/configure.log"; exit 1; }
    cmake --build --preset demo
}

make_music() {
    if [ -z "$music" ]; then
        music=$STATE/music
        [ -d "$music" ] || { echo "== Making a few music files"; "$BUILD/DeviceSimulator/make-demo-music" "$music"; }
    fi
    music=$(cd "$music" && pwd)
    echo "== The player holds the music of $music"
}

prepare_sound() {
    mkdir -p "$DEVICE_SIMULATOR_AUDIO"
    # What lies there from another time would sound instead of the music.
    rm -f "$DEVICE_SIMULATOR_AUDIO/capture.pcm"
    [ "$sound_card" = yes ] || return 0
    export ALSA_CONFIG_PATH=$BUILD/DeviceSimulator/card/asound-card.conf
    [ -d /dev/snd ] || { echo "This machine has no sound card (/dev/snd)." >&2; exit 1; }
}

explain_unconfined() {
    cat <<END
   The service writes /home/root/ipod.log, keeps /home/root/iap2db, and when it closes a device it deletes
   there every file with .db in its name and, in /, every file with .pls in its name:
END
    ls -d /*.[pP][lL][sS]* /home/root/iap2db/*.[dD][bB]* 2>/dev/null | sed 's/^/     /' || true
}

start_confined() {
    local card=()
    [ "$sound_card" = no ] || card=(--dev-bind /dev/snd /dev/snd)
    make_sandbox "$STATE/home" --ro-bind "$BUILD" "$BUILD" --ro-bind "$music" "$music" "${card[@]}" \
        --bind "$STATE" "$STATE" --setenv GST_REGISTRY "$STATE/gstreamer-registry" --chdir /
    if ! sandbox_works; then
        cat >&2 <<END
This machine refuses user namespaces, so there is no private file system to run the service in.
To run it on the machine's own: scripts/run-demo.sh --unconfined
END
        explain_unconfined >&2
        exit 1
    fi
    local status_pipe=$STATE/bwrap-status
    rm -f "$status_pipe"
    mkfifo "$status_pipe"
    # A session of its own: the terminal's Ctrl-C reaches this script alone, which passes on one signal.
    "${SANDBOX[@]}" --json-status-fd 9 -- "$BUILD/IpodService/ipod-service" 9>"$status_pipe" &
    shell_job=$!
    exec 8<"$status_pipe"
    local line
    read -r -t 10 line <&8 || true
    [[ $line =~ \"child-pid\":\ *([0-9]+) ]] && service=${BASH_REMATCH[1]}
    [ -n "$service" ] || { echo "bubblewrap did not start the service." >&2; exit 1; }
}

start_unconfined() {
    echo "== Running on this machine's own file system"
    explain_unconfined
    setsid "$BUILD/IpodService/ipod-service" &
    shell_job=$!
    service=$shell_job
}

# Passes one SIGTERM on and ends with the service's own status.
stop_service() {
    local status=$?
    trap - EXIT
    trap '' INT TERM
    if [ -n "$service" ]; then
        echo
        echo "== Stopping the service (SIGTERM)"
        kill -TERM "$service" 2>/dev/null || true
        status=0
        wait "$shell_job" || status=$?
        echo "== The service ended with status $status"
    fi
    exit "$status"
}

# False while nothing answers on the port.
is_up() {
    local status=0
    "$CTL" --timeout 1 is-ipod-connected >/dev/null 2>&1 || status=$?
    [ $status -ne 3 ]
}

start_service() {
    if is_up; then
        echo "Something listens on 127.0.0.1:$PORT already; stop it first." >&2
        exit 1
    fi
    export DEVICE_SIMULATOR_LIBRARY=$music DEVICE_SIMULATOR_CONTROL=$STATE/control
    export DEVICE_SIMULATOR_CACHE=${DEVICE_SIMULATOR_CACHE-$STATE/cache}
    trap stop_service EXIT
    trap exit INT TERM
    if [ $confined = yes ]; then start_confined; else start_unconfined; fi
    local tries
    for ((tries = 0; tries < 100; ++tries)); do
        is_up && return
        kill -0 "$service" 2>/dev/null || break
        sleep 0.1
    done
    echo "The service does not answer on port $PORT." >&2
    exit 1
}

# show COMMAND...: a command of ipodctl with what it prints.
show() {
    printf '   $ ipodctl %s\n' "$*"
    "$CTL" "$@" 2>&1 | sed 's/^/     /'
}

# The level of the last half second that came out of the unit, in per cent of full scale.
show_sound_level() {
    tail -c 88200 "$DEVICE_SIMULATOR_AUDIO/playback.wav" | od -An -v -t d2 | awk '
        { for (i = 1; i <= NF; ++i) { v = $i < 0 ? -$i : $i; if (v > top) top = v } }
        END { printf "   # what came out of the unit: peak level %.1f %% of full scale\n", top / 327.68 }'
}

# The root, the songs, where the next initial begins, a filter.
show_browsing() {
    show list
    show select 32
    show list --count 3
    show next-letter 0
    show filter an
    show list --count 3
    show reset
}

show_sound() {
    show start
    sleep 2 # to be heard
    if [ "$sound_card" = yes ]; then
        echo "   # the music now plays on this machine's sound card"
    else
        show_sound_level
        show stop
    fi
}

show_session() {
    echo "== A session on 127.0.0.1:$PORT (lines behind < are notifications, as they come)"
    "$CTL" watch > >(sed -u 's/^/   < /') 2>/dev/null &
    watcher=$!
    if ! "$CTL" wait ready --timeout 15; then
        echo "   (the player has nothing to play: its library holds no music, or is still being read)"
        return
    fi
    show_browsing
    show play
    show wait track --timeout 5
    show status
    show art "$STATE/cover.jpg"
    show next
    sleep 1 # for the time to be told
    show_sound
    show pause
    show play-pause
}

# The full-screen view, where there is a terminal for it; q leaves it.
show_view() {
    [ "$view" = yes ] && [ -t 0 ] && [ -t 1 ] || return 0
    echo "== The player view comes next: ? lists its keys, q leaves it"
    sleep 3 # for the session above to be read
    "$CTL" player || true
}

tell_what_next() {
    local build=${BUILD#"$PWD/"}
    cat <<END
== The service is up on 127.0.0.1:$PORT. In another shell, in this folder:

     $build/IpodControl/ipodctl status
     $build/IpodControl/ipodctl browse Artists
     $build/IpodControl/ipodctl player
     $build/DeviceSimulator/ipodsim send status
     python3 kit/examples/interface.py

   or with nothing but bash:

     exec 3<>/dev/tcp/127.0.0.1/$PORT
     echo '{"jsonrpc":"2.0","method":"playPause","id":1}' >&3; head -n 3 <&3

   Its log: $([ $confined = yes ] && echo "$STATE/home" || echo /home/root)/ipod.log
   The player's control socket: $STATE/control
   Ctrl-C stops it.
END
}

parse_arguments "$@"
build
make_music
prepare_sound
start_service
# What stays away is shown as such: a track may end, or have no picture, just then.
show_session || true
[ -z "$watcher" ] || kill "$watcher" 2>/dev/null || true
show_view
tell_what_next
wait "$shell_job"
