#!/usr/bin/env python3
"""Runs the benchmark programs several times as separate processes and sets ours beside the peers.

A benchmark is named IMPLEMENTATION_operation/arguments. Those that share operation and arguments within one program do
the same work and share a row: ours is the class of the library (CMemory, CString, ...), "Floor" is the least that the
order of locks, allocations and clock readings allows, and all the others are peers.
"""
import argparse
import json
import re
import statistics
import subprocess
import sys
from collections import OrderedDict
from pathlib import Path

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
OURS = re.compile(r"^C[A-Z]")


def run(program, options):
    command = [program, "--benchmark_format=json", *options]
    done = subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True)
    for entry in json.loads(done.stdout)["benchmarks"]:
        if entry.get("error_occurred"):
            sys.exit(f"{program}: {entry['name']}: {entry['error_message']}")
        yield entry


def collect(program, processes, options):
    """Per row and implementation: the real time in nanoseconds of each process."""
    rows = OrderedDict()
    for number in range(processes):
        print(f"{Path(program).name}: process {number + 1} of {processes}", file=sys.stderr)
        for entry in run(program, options):
            implementation, work = entry["name"].split("_", 1)
            work = re.sub(r"/(real_time|process_time|manual_time|iterations:\d+|min_time:[0-9.]+)", "", work)
            times = rows.setdefault(work, OrderedDict()).setdefault(implementation, [])
            # What is counted by items is told per item: a row then does not depend on the size of its batch.
            per_item = entry.get("items_per_second")
            times.append(1e9 / per_item if per_item else entry["real_time"] * UNITS[entry["time_unit"]])
    return rows


def figure(times):
    low, middle, high = min(times), statistics.median(times), max(times)
    return {"median_ns": middle, "spread": (high - low) / middle if middle else 0.0, "runs_ns": times}


def human(nanoseconds):
    for unit, factor in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def cell(figures, ours):
    text = f"{human(figures['median_ns'])} ±{figures['spread'] * 50:.0f}%"
    return text if ours is None else f"{text} ({figures['median_ns'] / ours:.2f})"


def print_section(name, rows):
    peers = list(OrderedDict.fromkeys(
        other for row in rows.values() for other in row if not OURS.match(other) and other != "Floor"))
    print(f"### {name}\n")
    print("| work | ours | floor | ours/floor | " + " | ".join(f"{peer} (by ours)" for peer in peers) + " |")
    print("|---" * (4 + len(peers)) + "|")
    for work, row in rows.items():
        ours = next((row[key] for key in row if OURS.match(key)), None)
        middle = ours["median_ns"] if ours else None
        floor = row.get("Floor")
        cells = [work, cell(ours, None) if ours else "", cell(floor, None) if floor else "",
                 f"{middle / floor['median_ns']:.2f}" if ours and floor else ""]
        cells += [cell(row[peer], middle) if peer in row else "" for peer in peers]
        print("| " + " | ".join(cells) + " |")
    print(flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--processes", type=int, default=5, help="times each program is run")
    parser.add_argument("--json", type=Path, required=True, help="file that the figures are written to")
    parser.add_argument("--option", action="append", default=[], help="handed on to each program")
    parser.add_argument("programs", nargs="+")
    arguments = parser.parse_args()

    print("Median of the processes' real times, ± half of the spread between them; in brackets how many times as long "
          "as ours. Less than 1.3 either way counts as no difference.\n")
    result = {}
    for program in arguments.programs:  # each as soon as it is done: the whole takes many minutes
        name = Path(program).name.replace("orlix-bench-", "")
        rows = collect(program, arguments.processes, arguments.option)
        result[name] = {work: {key: figure(times) for key, times in row.items()} for work, row in rows.items()}
        print_section(name, result[name])
        arguments.json.write_text(json.dumps(result, indent=1))


if __name__ == "__main__":
    main()
