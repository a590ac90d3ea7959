# SPDX-License-Identifier: GPL-3.0-or-later
"""A program with journals of its own, and sessions in which every answer and its time is known.

Looks at the program as seldom as it can: several run on one machine at the same time.
"""

import fcntl
import math
import random
import struct
import subprocess
import time
import wave
from pathlib import Path

import ostrine_driver as driver
from journals import Press

SHORT = 0.02
# Seconds of silence before each token. The program has it start this long after an answer.
SILENT_INTERVAL = 1.0


def make_tokens(folder, count, seconds=SHORT):
    """Writes tokens of both categories into a new folder; returns their names in the program's order."""
    folder = Path(folder)
    folder.mkdir(parents=True)
    for number in range(count):
        samples = (int(3000 * math.sin(2 * math.pi * (400 + 10 * number) * index / driver.SAMPLE_RATE))
                   for index in range(int(seconds * driver.SAMPLE_RATE)))
        with wave.open(str(folder / f"MOV{1 + number % 2:03}_{1 + number // 2:02}.wav"), "wb") as writer:
            writer.setnchannels(1)
            writer.setsampwidth(2)
            writer.setframerate(driver.SAMPLE_RATE)
            writer.writeframes(b"".join(struct.pack("<h", sample) for sample in samples))
    return driver.token_names(folder)


def shared(work, counter):
    """Yields what of the work no other process has taken that shares the counter file, which is empty at first."""
    while True:
        with open(counter, "r+", encoding="ascii") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            number = int(file.read() or 0)
            file.seek(0)
            file.write(str(number + 1))
        if number >= len(work):
            return
        yield work[number]


class Sitting(driver.Ostrine):
    """The running program; its log and journals are in `folder`."""

    def __init__(self, program, folder, **variables):
        folder = Path(folder)
        self.data_home = folder / "data"
        super().__init__(program, folder / "program.log", XDG_DATA_HOME=str(self.data_home),
                         QT_FORCE_STDERR_LOGGING="1", **variables)

    def journals(self):
        """The files of the journals, from the oldest on."""
        return sorted((self.data_home / "ostrine" / "sessions").glob("*.jsonl"))

    def logged(self, text):
        """How many lines of the log contain the text."""
        return sum(text in line for line in self.log().splitlines())

    def await_logged(self, text, count):
        def is_logged():
            self.require_running()
            return self.logged(text) >= count

        driver.wait_for(is_logged, f"'{text}' to be logged {count} times")

    def require_running(self):
        if self.process.poll() is not None:
            raise driver.DriverError(f"the program ended with {self.process.returncode}:\n{self.log()}")

    def switch(self, check_box):
        """Presses a check box of the operator's window."""
        box = self.main_check_box(check_box)
        before = driver.is_checked(box)
        driver.press(box)
        driver.wait_for(lambda: driver.is_checked(box) != before, f"'{check_box}' to change")

    def close_warning(self):
        """Presses "OK" in the warning box and returns its text."""
        box = self.window("Warning")
        texts = [driver.name_of(node) for node in driver.descendants(box)
                 if node.getRole() == driver.pyatspi.ROLE_LABEL]
        driver.press(driver.wait_for(lambda: driver.find(box, driver.pyatspi.ROLE_PUSH_BUTTON, "OK"), "'OK'"))
        return max(texts, key=len)


class Session:
    """A session from "Go" on. What was pressed, and when, is kept in `presses`."""

    def __init__(self, sitting, seed=0):
        self.sitting = sitting
        self.random = random.Random(seed)
        self.answers_before = sitting.logged("response:")
        self.starts_before = sitting.logged("Test just started")
        self.subject = sitting.go()
        self.presses = []
        self.ready_at = None
        # The clock time before which the program cannot have scheduled the token that comes next.
        self.scheduled_from = None
        # The clock time by which answers were seen to be possible, by trial.
        self.heard_by = {}
        self.points = None

    def ready(self):
        self.scheduled_from = time.monotonic()
        self.subject.ready()
        self.sitting.await_logged("Test just started", self.starts_before + 1)
        self.ready_at = time.monotonic()

    def await_answering(self):
        """Waits until answers are possible; returns the clock time by which they were seen to be."""
        trial = len(self.presses) + 1
        if trial in self.heard_by:
            return self.heard_by[trial]
        time.sleep(max(0.0, self.scheduled_from + SILENT_INTERVAL - time.monotonic()))

        def possible():
            self.sitting.require_running()
            return driver.is_enabled(self.subject.answers["mother"])

        driver.wait_for(possible, "answers to be possible", interval=0.02)
        self.heard_by[trial] = time.monotonic()
        if self.points is None:
            self.points = {}
            for response, button in self.subject.answers.items():
                x, y, width, height = driver.settled_box(button)
                self.points[response] = (x + width // 2, y + height // 2)
        return self.heard_by[trial]

    def answer(self, response=None, delay=0.0):
        """Hears a token and answers it by chance, or as told."""
        heard_by = self.await_answering()
        trial = len(self.presses) + 1
        token = driver.text_of(self.subject.token_field)
        response = response or self.random.choice(["mother", "stranger"])
        time.sleep(delay)
        before = time.monotonic()
        # Unlike its "click", which waits for a while behind the press.
        driver.xdotool("mousemove", *self.points[response], "mousedown", 1, "mouseup", 1)
        press = Press(trial, token, response, given=time.monotonic())
        self.presses.append(press)
        self.sitting.await_logged("response:", self.answers_before + trial)
        press.least = (before - heard_by) * 1000 - 1
        press.most = (time.monotonic() - self.scheduled_from - SILENT_INTERVAL) * 1000
        self.scheduled_from = before
        return press

    def next(self):
        self.scheduled_from = time.monotonic()
        driver.press(self.subject.button("Next"))

    def save(self, path):
        self.sitting.save_as(path)

    def leave(self):
        """Closes the subject window of a finished session."""
        self.subject.leave()
        self.await_idle()

    def break_off(self):
        """Closes the subject window in the middle of a session."""
        driver.close_window(driver.SUBJECT_WINDOW)
        self.subject.confirm()
        self.await_idle()

    def await_idle(self):
        driver.wait_for(lambda: driver.is_enabled(self.sitting.main_button("Practice")),
                        "the operator's window to be usable")


def press_close_box(title_end):
    """Presses the close button in a window's title bar."""
    window = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"{title_end}$"], check=True,
                            timeout=driver.PATIENCE, stdout=subprocess.PIPE, text=True).stdout.split()[0]
    facts = subprocess.run(["xwininfo", "-id", window], check=True, timeout=driver.PATIENCE,
                           stdout=subprocess.PIPE, text=True).stdout
    frame = subprocess.run(["xprop", "-id", window, "_NET_FRAME_EXTENTS"], check=True,
                           timeout=driver.PATIENCE, stdout=subprocess.PIPE, text=True).stdout
    numbers = {line.split(":")[0].strip(): line.split(":")[1] for line in facts.splitlines() if ":" in line}
    left, top, width = (int(numbers[key]) for key in
                        ("Absolute upper-left X", "Absolute upper-left Y", "Width"))
    title_bar = int(frame.split("=")[1].split(",")[2])
    driver.xdotool("mousemove", left + width - title_bar // 2, top - title_bar // 2, "click", 1)
