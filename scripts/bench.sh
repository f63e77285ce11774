#!/usr/bin/env bash
# Builds the release preset, measures, and prints the tables of docs/performance.md: here, the floor, the ratio, what
# is wanted; what is not reached stands between asterisks. An idle machine is worth more than many rounds.
#
#   scripts/bench.sh [--rounds N] [--minutes N] [--json FILE] [--compare FILE] [PROGRAM...]
#
#   PROGRAM          wire, parts, growth, sound, simulator; all of them when left out
#   --rounds N       medians of so many rounds, 5 when left out
#   --minutes N      how long the sound is listened to under load, 1 when left out
#   --json FILE      where the figures go, build/bench.json when left out
#   --compare FILE   tells what became worse since FILE was written; the exit status is then 1
#
# The programs stand in build/release/bench and say at their heads what they can besides: bench_wire measures several
# binaries of the service side by side, and chosen rows.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/lib/packages.sh

rounds=5 minutes=1 json=build/bench.json compare=() programs=()
while [ $# -gt 0 ]; do
    case "$1" in
        --rounds) rounds=$2; shift 2 ;;
        --minutes) minutes=$2; shift 2 ;;
        --json) json=$2; shift 2 ;;
        --compare) compare=(--compare "$2"); shift 2 ;;
        -h | --help) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; exit 0 ;;
        wire | parts | growth | sound | simulator) programs+=("$1"); shift ;;
        *) echo "scripts/bench.sh knows no $1" >&2; exit 2 ;;
    esac
done
[ ${#programs[@]} -gt 0 ] || programs=(wire parts growth sound simulator)

need_packages "${BUILD_PACKAGES[@]}" "${RUN_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${BENCH_PACKAGES[@]}"
echo "== Building (preset release)"
mkdir -p build
cmake --preset release >build/configure.log 2>&1 || { cat build/configure.log; exit 1; }
cmake --build --preset release --target bench/all

bench=$PWD/build/release/bench
export BENCH_RESULTS=$bench/results.jsonl
rm -f "$BENCH_RESULTS" "$bench/parts.json"
run_in_sandbox() {
    tests/EndToEnd/sandbox.sh "$@"
}
for program in "${programs[@]}"; do
    echo "== Measuring: $program (load $(cut -d' ' -f1 /proc/loadavg))"
    case "$program" in
        wire) run_in_sandbox "$bench/bench_wire" --rounds "$rounds" ;;
        parts) "$bench/bench_parts" --benchmark_repetitions="$rounds" --benchmark_report_aggregates_only \
            --benchmark_enable_random_interleaving --benchmark_min_time=0.1 \
            --benchmark_out="$bench/parts.json" --benchmark_out_format=json >"$bench/parts.log" ;;
        growth) "$bench/bench_growth" ;;
        sound) run_in_sandbox "$bench/bench_sound" "$minutes" ;;
        simulator)
            "$bench/bench_device_call"
            "$bench/../DeviceSimulator/bench_music_folder"
            "$bench/bench_player_start" ;;
    esac
done
python3 bench/report.py --results "$BENCH_RESULTS" --benchmarks "$bench/parts.json" --json "$json" "${compare[@]}"
