#!/usr/bin/env python3
"""Tells what was measured beside what is wanted, and what became worse.

    report.py [--results FILE] [--benchmarks FILE] [--json FILE] [--compare FILE]

--results is what the programs wrote that BENCH_RESULTS was set for, --benchmarks Google Benchmark's JSON; --json is
where all of it goes in one piece, and what a later run is compared with. rows.json beside this file has each row:
its table, name and unit, what is wanted, and of what: "value", "ratio" to the floor, or the time "above" the floor.
Less is better unless the row says "higher".
"""

import argparse
import json
import re
import sys
from dataclasses import asdict, dataclass
from pathlib import Path
from typing import Any

NANOSECONDS = {"ns": 1.0, "us": 1e3, "µs": 1e3, "ms": 1e6, "s": 1e9}
NOISE = 1.1  # what two runs of the same program differ by


@dataclass
class Figure:
    value: float
    floor: float | None = None


Figures = dict[str, Figure]


@dataclass
class Row:
    row: str
    table: str
    name: str
    unit: str
    wanted: float | None = None
    of: str = "value"
    better: str = "lower"
    time: str = "wall"
    figure: str = ""
    worst_of: str = ""


@dataclass
class Result:
    row: str
    value: float
    floor: float | None
    ratio: float | None
    judged: float
    note: str = ""


def read_rows() -> list[Row]:
    text = (Path(__file__).parent / "rows.json").read_text(encoding="utf-8")
    return [Row(**row) for row in json.loads(text)]


def read_results(path: Path) -> Figures:
    lines = [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
    return {line["row"]: Figure(line["value"], line.get("floor")) for line in lines}


def benchmark_name(entry: dict[str, Any]) -> str:
    return re.sub(r"/(min_time:[^/]*|process_time|real_time|repeats:\d+)", "", entry["run_name"])


def read_benchmarks(path: Path, time: str) -> dict[str, float]:
    """Nanoseconds of each benchmark; of repeated ones the median."""
    times: dict[str, float] = {}
    for entry in json.loads(path.read_text(encoding="utf-8"))["benchmarks"]:
        if entry["run_type"] == "iteration" or entry.get("aggregate_name") == "median":
            key = "cpu_time" if time == "cpu" else "real_time"
            times[benchmark_name(entry)] = entry[key] * NANOSECONDS[entry["time_unit"]]
    return times


def benchmark_figure(row: Row, times: dict[str, float]) -> tuple[Figure, str] | None:
    names = [row.figure or row.row]
    if row.worst_of:
        names = [name for name in times if name.startswith(row.worst_of) and name + "/floor" in times]
    names = [name for name in names if name in times]
    if not names:
        return None
    worst = max(names, key=lambda name: times[name] / times.get(name + "/floor", 1.0))
    unit = NANOSECONDS[row.unit]
    floor = times.get(worst + "/floor")
    figure = Figure(times[worst] / unit, None if floor is None else floor / unit)
    return figure, worst.removeprefix(row.worst_of) if row.worst_of else ""


def judge(row: Row, figure: Figure, note: str) -> Result:
    ratio = figure.value / figure.floor if figure.floor else None
    judged = figure.value
    if row.of == "ratio" and ratio is not None:
        judged = ratio
    elif row.of == "above":
        judged = figure.value - (figure.floor or 0.0)
    return Result(row.row, figure.value, figure.floor, ratio, judged, note)


def collect(rows: list[Row], results: Figures, benchmarks: Path | None) -> dict[str, Result]:
    times = {time: read_benchmarks(benchmarks, time) if benchmarks else {} for time in ("cpu", "wall")}
    collected: dict[str, Result] = {}
    for row in rows:
        if row.row in results:
            collected[row.row] = judge(row, results[row.row], "")
        elif found := benchmark_figure(row, times[row.time]):
            collected[row.row] = judge(row, *found)
    return collected


def number(value: float | None) -> str:
    if value is None:
        return ""
    if value == int(value) or abs(value) >= 1000:
        return f"{value:,.0f}"
    return f"{value:.3g}" if abs(value) < 100 else f"{value:.0f}"


def is_met(row: Row, judged: float) -> bool:
    if row.wanted is None:
        return True
    return judged >= row.wanted if row.better == "higher" else judged <= row.wanted


def wanted_text(row: Row, result: Result) -> str:
    if row.wanted is None:
        return ""
    text = number(row.wanted) + (" times" if row.of == "ratio" else "")
    return text if is_met(row, result.judged) else f"**{text}**"


def print_tables(rows: list[Row], results: dict[str, Result]) -> None:
    """As docs/performance.md has them; what is not reached stands out."""
    table = ""
    for row in rows:
        result = results.get(row.row)
        if result is None:
            continue
        if row.table != table:
            table = row.table
            print(f"\n## {table}\n\n| What | Unit | Here | Floor | Ratio | Wanted |\n|---|---|---|---|---|---|")
        ratio = "" if result.ratio is None else f"{result.ratio:.2f}"
        name = row.name + (f": {result.note}" if result.note else "")
        unit = "" if row.unit == "1" else row.unit
        print(
            f"| {name} | {unit} | {number(result.value)} | {number(result.floor)} | {ratio} "
            f"| {wanted_text(row, result)} |"
        )


def is_worse(row: Row, now: float, before: float) -> bool:
    return now * NOISE < before if row.better == "higher" else now > before * NOISE


def print_comparison(rows: list[Row], now: dict[str, Result], before: dict[str, Any]) -> bool:
    """What became worse by more than the noise. False when nothing did."""
    worse = [row for row in rows if row.row in now and row.row in before]
    worse = [row for row in worse if is_worse(row, now[row.row].judged, before[row.row]["judged"])]
    print("\n## Worse than before\n" if worse else "\nNothing is worse than before.")
    for row in worse:
        print(f"{row.row:28} {number(before[row.row]['judged']):>10} -> {number(now[row.row].judged):>10}  {row.name}")
    return bool(worse)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("results", "benchmarks", "json", "compare"):
        parser.add_argument(f"--{name}", type=Path)
    options = parser.parse_args()
    rows = read_rows()
    measured = read_results(options.results) if options.results and options.results.exists() else {}
    for name in measured.keys() - {row.row for row in rows}:
        print(f"rows.json has no row {name}", file=sys.stderr)
    benchmarks = options.benchmarks if options.benchmarks and options.benchmarks.exists() else None
    results = collect(rows, measured, benchmarks)
    print_tables(rows, results)
    if options.json:
        content = {name: asdict(result) for name, result in results.items()}
        options.json.write_text(json.dumps(content, indent=1) + "\n", encoding="utf-8")
    if options.compare:
        before = json.loads(options.compare.read_text(encoding="utf-8"))
        return 1 if print_comparison(rows, results, before) else 0
    return 0


if __name__ == "__main__":
    sys.exit(main())
