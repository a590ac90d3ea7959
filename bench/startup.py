#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints how long programs take to their first painted window, and what memory they occupy then.

    startup.py <folder of the build> [rounds, 41]

The first program is the experiment's, as it is installed; the others are bare Qt programs that it is
compared with. Every round starts each of them once, in random order. The time runs from the call that
starts the program until a probe within it (StartProbe.cpp), which is the same for all, sees that the
window has been painted.
"""

import os
import pathlib
import random
import statistics
import subprocess
import sys
import time

from compare import spread


def start(command, environment):
    """Milliseconds until the window of the command is painted, its resident memory and the part of
    that which belongs to no file, both in MB."""
    begin = time.monotonic_ns()
    result = subprocess.run(command, env=environment, capture_output=True, text=True, timeout=60)
    try:
        painted, *memory = map(int, result.stdout.split())
    except ValueError:
        sys.exit(f"startup: {command[0]} has painted no window: {result.stderr}")
    return (painted - begin) / 1e6, *(bytes_ / 1e6 for bytes_ in memory)


def main():
    build = pathlib.Path(sys.argv[1])
    n_rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 41
    environment = {**os.environ, "QT_PLUGIN_PATH": str(build / "bench"),
                   "QT_QPA_GENERIC_PLUGINS": "startprobe"}
    bare = str(build / "bench" / "bare_window")
    commands = {"Ostrine": [str(build / "src" / "ostrine")],
                "bare window": [bare],
                "bare window, charts with axes": [bare, "axes"],
                "bare window, charts with axes and controls": [bare, "controls"],
                "the same with the libraries for sound": [f"{bare}_with_sound", "controls"]}
    measured = {name: [] for name in commands}
    for command in commands.values():
        start(command, environment)  # reads the files into the page cache
    for _ in range(n_rounds):
        for name in random.sample(list(commands), len(commands)):
            measured[name].append(start(commands[name], environment))

    print("| program | median in ms | spread | Ostrine's time by this one's | memory in MB |"
          " of that, of no file | Ostrine's more |")
    print("|---|---|---|---|---|---|---|")
    medians = {name: [statistics.median(values) for values in zip(*runs)]
               for name, runs in measured.items()}
    own_time, own_memory, _ = medians["Ostrine"]
    for name, (milliseconds, memory, anonymous) in medians.items():
        times = [run[0] for run in measured[name]]
        print(f"| {name} | {milliseconds:.1f} | {spread(times):.0f} % | {own_time / milliseconds:.2f} |"
              f" {memory:.1f} | {anonymous:.1f} | {own_memory - memory:+.1f} |")


if __name__ == "__main__":
    main()
