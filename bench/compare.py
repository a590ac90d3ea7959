#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs a benchmark executable and prints how its contestants compare, as a Markdown table.

    compare.py [--cpu-time] <executable> [options of Google Benchmark...]

The executable names its benchmarks <what>/<who>/<size>. One <who> of each group is "ostrine"; the
table gives its time divided by that of every other one with the same <what> and <size>.

Other work on the machine must not decide the result: all benchmarks are repeated, in random order
within one run, and medians are compared. The spread, given for both times, is half the distance
between the quartiles in percent of the median. On a machine that others use, --cpu-time compares
the processor time instead of the real time.
"""

import json
import statistics
import subprocess
import sys
import tempfile

REPETITIONS = 15


def run(clock, executable, options):
    """The times of all repetitions in nanoseconds: {(what, size): {who: [times]}}.

    The clock is "real_time" or "cpu_time".
    """
    with tempfile.NamedTemporaryFile(suffix=".json") as result:
        subprocess.run(
            [executable,
             f"--benchmark_repetitions={REPETITIONS}",
             "--benchmark_enable_random_interleaving=true",
             "--benchmark_min_time=0.05",
             f"--benchmark_out={result.name}",
             "--benchmark_out_format=json",
             *options],
            check=True, stdout=subprocess.DEVNULL)
        report = json.load(result)
    nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for entry in report["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        what, who, size = entry["run_name"].split("/")[:3]
        times.setdefault((what, int(size)), {}).setdefault(who, []).append(
            entry[clock] * nanoseconds[entry["time_unit"]])
    return times


def spread(times):
    quartiles = statistics.quantiles(times, n=4)
    return (quartiles[2] - quartiles[0]) / 2 / statistics.median(times) * 100


def main():
    arguments = sys.argv[1:]
    clock = "real_time"
    if arguments[:1] == ["--cpu-time"]:
        clock = "cpu_time"
        del arguments[0]
    times = run(clock, arguments[0], arguments[1:])
    print("| what | size | Ostrine, median in us | compared with | ratio | spread |")
    print("|---|---|---|---|---|---|")
    for (what, size), contestants in sorted(times.items()):
        ours = contestants.pop("ostrine")
        for who, theirs in sorted(contestants.items()):
            ratio = statistics.median(ours) / statistics.median(theirs)
            print(f"| {what} | {size} | {statistics.median(ours) / 1e3:.1f} | {who} | {ratio:.2f} |"
                  f" {spread(ours):.0f} %, {spread(theirs):.0f} % |")


if __name__ == "__main__":
    main()
