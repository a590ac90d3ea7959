# SPDX-License-Identifier: GPL-3.0-or-later
"""Kills the program at random times of a session, and looks for the answers in the journal it leaves.

    scripts/private-session.sh --audio --display /usr/bin/python3 tests/e2e/test_kills.py PROGRAM TOOLS

For each kill it prints a line; scripts/kills.sh runs many side by side.
"""

import argparse
import os
import random
import shutil
import signal
import sys
import tempfile
import threading
import time
from pathlib import Path

import ostrine_driver as driver
from gi.repository import GLib
from journals import check_answers, check_head, check_restored, lines_of, require
from sittings import SILENT_INTERVAL, Session, Sitting, make_tokens, shared

# What one trial takes on average: the silent interval, the token on its way to the output, the answer.
TRIAL_SECONDS = SILENT_INTERVAL + 0.3
LONGEST_DELAY = 0.2


def planned_kills(count, trials, seed):
    """(number, seconds after "I am ready", signal) of each kill, the latest first.

    Both are drawn here for all of them, so that they do not depend on how the work is divided.
    """
    chance = random.Random(seed)
    kills = [(number, chance.uniform(0.0, trials * TRIAL_SECONDS),
              chance.choice([signal.SIGKILL, signal.SIGKILL, signal.SIGTERM]))
             for number in range(1, count + 1)]
    return sorted(kills, key=lambda kill: kill[1], reverse=True)


class Killer:
    """Sends the signal to the process after so many seconds, whatever goes on here then."""

    def __init__(self, process, seconds, number):
        self.killed_at = None
        self.process = process
        self.number = number
        self.timer = threading.Timer(seconds, self.kill)
        self.timer.daemon = True
        self.timer.start()

    def kill(self):
        self.killed_at = time.monotonic()
        os.kill(self.process.pid, self.number)

    def await_end(self):
        self.timer.join()
        return self.process.wait(driver.PATIENCE)


def kill_once(program, tools, folder, kill, trials, seed):
    number, seconds, which = kill
    tokens = make_tokens(folder / "tokens", trials)
    with Sitting(program, folder) as sitting:
        sitting.prepare("Practice", folder / "tokens")
        session = Session(sitting, seed=f"{seed}/{number}")
        session.ready()
        killer = Killer(sitting.process, seconds - (time.monotonic() - session.ready_at), which)
        try:
            for _ in range(trials):
                session.answer(delay=session.random.uniform(0.0, LONGEST_DELAY))
            sitting.save_dialog()
        except (driver.DriverError, GLib.Error, LookupError, RuntimeError):
            # What is to be expected of a program that is gone.
            if killer.killed_at is None:
                raise
        code = killer.await_end()
        require(code == -which, f"the program ended with {code}:\n{sitting.log()}")

        journals = sitting.journals()
        lines = lines_of(journals[0].read_bytes()) if journals else []
        require(len(journals) <= 1, f"there are {len(journals)} journals")
        require(lines or killer.killed_at - session.ready_at < 1.0, "nothing of the session was kept")
        if lines:
            check_head(lines, tokens)
        kept = check_answers(lines, session.presses, killer.killed_at)
        if lines:
            check_restored(tools, sitting.data_home, journals[0], folder / "restored")
    given = len(session.presses)
    print(f"kill {number}: {which.name} after {seconds:.3f} s: {given} answers given, {kept} kept"
          + "".join(f", {press.trial} lost, given {killer.killed_at - press.given:.3f} s before"
                    for press in session.presses[kept:]), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("tools", type=Path)
    parser.add_argument("--kills", type=int, default=10, help="how many")
    parser.add_argument("--trials", type=int, default=12, help="of each session")
    parser.add_argument("--seed", type=int, default=1, help="of the times of the kills and the answers")
    parser.add_argument("--shared", type=Path, help="the file by which several share the kills")
    arguments = parser.parse_args()
    kills = planned_kills(arguments.kills, arguments.trials, arguments.seed)

    failed = 0
    for kill in shared(kills, arguments.shared) if arguments.shared else kills:
        driver.start_watchdog(120 + 2 * kill[1])
        folder = Path(tempfile.mkdtemp(prefix="ostrine-test."))
        try:
            kill_once(arguments.program.resolve(), arguments.tools.resolve(), folder, kill, arguments.trials,
                      arguments.seed)
        except (AssertionError, driver.DriverError) as failure:
            failed += 1
            print(f"kill {kill[0]}: {kill[2].name} after {kill[1]:.3f} s: FAILED: {failure}", flush=True)
        finally:
            shutil.rmtree(folder)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
