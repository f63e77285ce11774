#!/bin/sh
# Starts the service COUNT times under request load and ends it by a signal at a random moment:
#
#     scripts/stress-start-stop.sh [COUNT, default 1000] [BUILD_FOLDER, default build/dev]
#
# COUNT runs get SIGTERM at or after the main loop's start, and must end with status 0, in order. A quarter as
# many, beside them, get it earlier, half of these from the moment on in which the handler is in place: they end
# with 143 before it is, and then either in order or through a second signal, with 1. A run that does none of
# this, or hangs, is a broken promise.
#
# That the main loop runs is read off /proc/PID/task/PID/syscall: the main thread sleeps in poll on a single
# descriptor, which is the loop's own wake-up; nothing that it does before polls one. By the same sign a service
# that needs its second signal is told from one that is about to end: its server has stopped, and the main
# thread sleeps on.
#
# That the handler is in place is read off the caught signals in /proc/PID/status.
#
# Each run prints the seed of its random numbers; SEED=n repeats them. Status 0 when every promise was kept,
# 77 where the system refuses the sandbox.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd -P)
count=${1:-1000}
build=${2:-$root/build/dev}

exec "$root/tests/EndToEnd/sandbox.sh" "$build/stress/start_stop" "$count" ${SEED:+"$SEED"}
