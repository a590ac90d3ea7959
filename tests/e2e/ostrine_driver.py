# SPDX-License-Identifier: GPL-3.0-or-later
"""Operates the program from outside, as its two users do.

Widgets are found through the accessibility bus (by the text they carry, or by the label in front of them),
but only read there: every press and every letter goes through the X server, so a button which is covered,
disabled or in the wrong place cannot be pressed here either. What is heard is recorded from the monitor of
the virtual output.

Runs inside scripts/private-session.sh --audio --display.
"""

import array
import faulthandler
import os
import shutil
import signal
import subprocess
import sys
import threading
import time
import wave
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402
import pyatspi  # noqa: E402

CHECKOUT = Path(__file__).resolve().parents[2]
TOKEN_FOLDER = CHECKOUT / "examples" / "tokens"
SAMPLE_RATE = 48000
MAIN_WINDOW = "Main Window"
SUBJECT_WINDOW = "Subject Window"
CONFIRMATION = "Confirmation MessageBox"

# How long any single step may take. Generous, because a build server may be busy; reaching it is an error.
PATIENCE = 30.0


class DriverError(Exception):
    pass


def start_watchdog(seconds):
    """Ends this process after so many seconds, telling where it hung; the session ends the program then."""
    faulthandler.dump_traceback_later(seconds, exit=True)


def wait_for(condition, what, patience=PATIENCE, interval=0.01):
    """Polls until the condition gives something true, and returns that."""
    deadline = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise DriverError(f"waited {patience:.0f} s in vain for {what}")
        time.sleep(interval)


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=PATIENCE)


# --- Widgets -------------------------------------------------------------------------------------------

def has_state(node, *states):
    """Whether the widget has all the states; a widget that is gone has none."""
    try:
        present = node.getState()
        return all(present.contains(state) for state in states)
    except (GLib.Error, LookupError, RuntimeError, AttributeError):
        return False


def is_showing(node):
    return has_state(node, pyatspi.STATE_SHOWING)


def is_enabled(node):
    return has_state(node, pyatspi.STATE_ENABLED, pyatspi.STATE_SENSITIVE, pyatspi.STATE_SHOWING)


def is_checked(node):
    return has_state(node, pyatspi.STATE_CHECKED)


def name_of(node):
    return (node.name or "").replace("&", "")


def text_of(node):
    content = node.queryText()
    return content.getText(0, content.characterCount)


def box_of(node):
    """(x, y, width, height) on the screen."""
    extents = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return extents.x, extents.y, extents.width, extents.height


def descendants(node):
    try:
        count = node.childCount
    except (GLib.Error, LookupError, RuntimeError):
        return
    for index in range(count):
        try:
            child = node.getChildAtIndex(index)
        except (GLib.Error, LookupError, RuntimeError):
            continue
        if child is not None:
            yield child
            yield from descendants(child)


def find(root, role, name=None):
    """The first shown widget of that role (and name) below root, or None."""
    for node in descendants(root):
        try:
            if node.getRole() == role and (name is None or name_of(node) == name) and is_showing(node):
                return node
        except (GLib.Error, LookupError, RuntimeError):
            continue
    return None


def find_field(root, label_text):
    """The line edit to the right of the label with that text, or None.

    By position, which is how a reader tells what a field is for.
    """
    label = find(root, pyatspi.ROLE_LABEL, label_text)
    if label is None:
        return None
    x, y, width, height = box_of(label)
    best = None
    for node in descendants(root):
        try:
            if node.getRole() not in (pyatspi.ROLE_TEXT, pyatspi.ROLE_ENTRY) or not is_showing(node):
                continue
            left, top, _, tall = box_of(node)
        except (GLib.Error, LookupError, RuntimeError, NotImplementedError):
            continue
        same_row = top < y + height / 2 < top + tall
        if same_row and left >= x + width - 2 and (best is None or left < best[0]):
            best = (left, node)
    return best[1] if best else None


def settled_box(node):
    """The widget's box once it has stopped moving: a new window is placed by the window manager."""
    previous = None

    def still():
        nonlocal previous
        current = box_of(node)
        settled = current == previous and current[2] > 0 and current[3] > 0
        previous = current
        return current if settled else None

    return wait_for(still, "a widget to stop moving", interval=0.05)


def middle_of(node):
    x, y, width, height = settled_box(node)
    return x + width // 2, y + height // 2


def point_at(node):
    # Without --sync, which waits in vain for a pointer that is there already.
    xdotool("mousemove", *middle_of(node))


def click_at(point):
    """Presses what is there, without looking: also while the program is held up."""
    xdotool("mousemove", *point, "click", 1)


def press(node):
    wait_for(lambda: is_enabled(node), f"'{name_of(node)}' to be enabled")
    point_at(node)
    xdotool("click", 1)


def type_into(node, text):
    """Replaces a field's text from the keyboard."""
    for _ in range(3):
        press(node)
        wait_for(lambda: has_state(node, pyatspi.STATE_FOCUSED), "a field to get the keyboard")
        xdotool("key", "ctrl+a")
        xdotool("type", "--delay", "4", text)
        try:
            wait_for(lambda: text_of(node) == text, f"the field to show '{text}'", patience=3)
            return
        except DriverError:
            # Letters can get lost while a window is being activated; a person would see it and type again.
            continue
    raise DriverError(f"typed '{text}', but the field shows '{text_of(node)}'")


# --- The program -----------------------------------------------------------------------------------------

@dataclass
class Trial:
    """One presentation as it was seen from outside."""
    token: str
    response: str
    status: str
    # Limits of the reaction time in ms, from what the clock said before and after each observation.
    least: float
    most: float
    # Clock time by which the answer buttons were seen enabled.
    enabled_by: float


class Ostrine:
    """The running program. Use as a context manager: leaving it ends the program.

    Further arguments are variables of its environment.
    """

    def __init__(self, program, log_path, **variables):
        self.log_path = Path(log_path)
        environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **variables)
        with open(self.log_path, "wb") as log:
            self.process = subprocess.Popen([str(program)], stdin=subprocess.DEVNULL, stdout=log,
                                            stderr=subprocess.STDOUT, env=environment,
                                            cwd=os.environ["HOME"])

    def __enter__(self):
        try:
            self.main = self.window(MAIN_WINDOW)
        except BaseException:
            self.end()
            raise
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()

    def quit(self):
        """Presses "Quit" and returns the exit code."""
        press(self.main_button("Quit"))
        return self.process.wait(PATIENCE)

    @contextmanager
    def held_up(self):
        """Stops the program, as if it were busy: what is pressed in this context queues up."""
        self.process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self.process.send_signal(signal.SIGCONT)

    def log(self):
        return self.log_path.read_text(errors="replace")

    # Windows and what is in them

    def windows(self):
        if self.process.poll() is not None:
            raise DriverError(f"the program ended with {self.process.returncode}:\n{self.log()}")
        desktop = pyatspi.Registry.getDesktop(0)
        shown = []
        for index in range(desktop.childCount):
            try:
                application = desktop.getChildAtIndex(index)
                if application is None or application.get_process_id() != self.process.pid:
                    continue
                for number in range(application.childCount):
                    window = application.getChildAtIndex(number)
                    if window is not None and is_showing(window):
                        shown.append(window)
            except (GLib.Error, LookupError, RuntimeError):
                continue
        return shown

    def find_window(self, title_end):
        for window in self.windows():
            if name_of(window).endswith(title_end):
                return window
        return None

    def window(self, title_end):
        return wait_for(lambda: self.find_window(title_end), f"a window titled '...{title_end}'")

    def main_button(self, text):
        return wait_for(lambda: find(self.main, pyatspi.ROLE_PUSH_BUTTON, text), f"the button '{text}'")

    def main_check_box(self, text):
        return wait_for(lambda: find(self.main, pyatspi.ROLE_CHECK_BOX, text), f"the check box '{text}'")

    def main_field(self, label):
        return wait_for(lambda: find_field(self.main, label), f"the field '{label}'")

    def read(self, label):
        return text_of(self.main_field(label))

    # The operator

    def prepare(self, button, folder):
        """Presses "Practice" or "Experiment" and types the folder into the dialog."""
        for attempts_left in (2, 1, 0):
            press(self.main_button(button))
            try:
                dialog = wait_for(lambda: self.find_window("Select a folder"), "the folder dialog", patience=10)
                break
            except DriverError:
                # On a busy machine the window may still have been on its way to its place.
                if attempts_left == 0:
                    raise
        field = wait_for(lambda: find_field(dialog, "Directory:"), "the folder dialog's name field")
        type_into(field, str(folder))
        xdotool("key", "Return")
        wait_for(lambda: not self.find_window("Select a folder"), "the folder dialog to close")
        wait_for(lambda: is_enabled(self.main_button("Go")), "'Go' to be enabled")

    def go(self):
        press(self.main_button("Go"))
        subject = self.window(SUBJECT_WINDOW)
        return Subject(self, subject)

    def save_dialog(self):
        """(dialog, its name field) of the save dialog at the end of a session."""
        dialog = self.window("Save a file")
        field = wait_for(lambda: find_field(dialog, "File name:"), "the save dialog's name field")
        return dialog, field

    def save_as(self, path):
        _, field = self.save_dialog()
        type_into(field, str(path))
        xdotool("key", "Return")
        wait_for(lambda: not self.find_window("Save a file"), "the save dialog to close")


class Subject:
    """The subject in front of the subject window."""

    def __init__(self, program, window):
        self.program = program
        self.window = window
        self.token_field = program.main_field("WAV filename")
        self.status_field = program.main_field("Status")

    def find_button(self, text):
        return find(self.window, pyatspi.ROLE_PUSH_BUTTON, text)

    def button(self, text):
        return wait_for(lambda: self.find_button(text), f"the subject's button '{text}'")

    def ready(self):
        press(self.button("I am ready"))
        self.answers = {"mother": self.button("Mother"), "stranger": self.button("Stranger")}

    def await_answering(self):
        """Waits until answers are possible; returns (last time they were not, first time they were)."""
        closed_at = time.monotonic()
        deadline = closed_at + PATIENCE
        while True:
            asked = time.monotonic()
            if is_enabled(self.answers["mother"]) and is_enabled(self.answers["stranger"]):
                return closed_at, time.monotonic()
            closed_at = asked
            if asked > deadline:
                raise DriverError("waited in vain for the answer buttons to be enabled")
            time.sleep(0.004)

    def answer(self, choose, delay):
        """Hears a token, chooses with choose(file name), presses `delay` seconds after it was possible."""
        closed_at, enabled_by = self.await_answering()
        token = text_of(self.token_field)
        status = text_of(self.status_field)
        response = choose(token)
        button = self.answers[response]
        point_at(button)
        time.sleep(max(0.0, enabled_by + delay - time.monotonic()))
        before_press = time.monotonic()
        xdotool("click", 1)
        wait_for(lambda: not is_enabled(button), "the answer to be taken", interval=0.002)
        return Trial(token, response, status,
                     least=(before_press - enabled_by) * 1000 - 1,
                     most=(time.monotonic() - closed_at) * 1000,
                     enabled_by=enabled_by)

    def request_close(self):
        """Presses "Done" and returns the confirmation box."""
        # Window managers keep the window a dialog belongs to right below it, so that after the save dialog
        # the operator's window may lie over this one.
        bring_forward(SUBJECT_WINDOW)
        press(self.button("Done"))
        return self.program.window(CONFIRMATION)

    def reply(self, text):
        """Presses a button of the confirmation box."""
        box = self.program.window(CONFIRMATION)
        press(wait_for(lambda: find(box, pyatspi.ROLE_PUSH_BUTTON, text), f"'{text}'"))
        wait_for(lambda: not self.program.find_window(CONFIRMATION), "the confirmation box to close")

    def confirm(self):
        self.reply("Yes")
        wait_for(lambda: not self.program.find_window(SUBJECT_WINDOW), "the subject window to close")

    def leave(self):
        self.request_close()
        self.confirm()


def bring_forward(title_end):
    """Activates a window, as picking it from a task bar does; returns its X11 id."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"{title_end}$"],
                           timeout=PATIENCE, stdout=subprocess.PIPE, text=True).stdout.split()
    if len(found) != 1:
        raise DriverError(f"expected one window titled '...{title_end}', found {found}")
    xdotool("windowactivate", "--sync", found[0])
    return found[0]


def close_window(title_end):
    """Asks a window to close, as its close button does."""
    bring_forward(title_end)
    # Not xdotool's own command for it, which destroys the window and with it the program.
    xdotool("key", "alt+F4")


def screenshot(path):
    """The whole screen as a PNG file."""
    subprocess.run(["import", "-silent", "-window", "root", str(path)], check=True, timeout=PATIENCE)


# --- Tokens, categories and what is heard --------------------------------------------------------------

def token_names(folder):
    """The folder's tokens in the program's order."""
    return sorted((entry.name for entry in Path(folder).iterdir() if entry.suffix.lower() == ".wav"),
                  key=str.lower)


def category(file_name, subject_code="CHD001"):
    return "mother" if subject_code[-3:] in file_name else "stranger"


def other(answer):
    return "stranger" if answer == "mother" else "mother"


def copy_tokens(names, folder):
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    for name in names:
        shutil.copyfile(TOKEN_FOLDER / name, folder / name)
    return folder


def samples_of(path):
    """A 16-bit mono token's samples as the 32-bit floats which must reach the output."""
    with wave.open(str(path), "rb") as reader:
        if (reader.getnchannels(), reader.getsampwidth(), reader.getframerate()) != (1, 2, SAMPLE_RATE):
            raise DriverError(f"{path} is not 48 kHz, mono, 16 bits")
        whole = array.array("h")
        whole.frombytes(reader.readframes(reader.getnframes()))
    if sys.byteorder == "big":
        whole.byteswap()
    return array.array("f", (value / 32768.0 for value in whole))


class Recorder:
    """Records the monitor of the virtual output for as long as the context lasts."""

    def __enter__(self):
        self.data = bytearray()
        self.lock = threading.Lock()
        # (clock time, samples recorded by then) of every arrival.
        self.arrivals = []
        self.process = subprocess.Popen(
            ["parec", "-d", "out.monitor", "--raw", "--format=float32le", f"--rate={SAMPLE_RATE}",
             "--channels=1", "--latency-msec=20"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        wait_for(lambda: self.length() > 0, "the recording to start")
        return self

    def _read(self):
        while True:
            chunk = os.read(self.process.stdout.fileno(), 1 << 16)
            now = time.monotonic()
            if not chunk:
                return
            with self.lock:
                self.data += chunk
                self.arrivals.append((now, len(self.data) // 4))

    def length(self):
        with self.lock:
            return len(self.data) // 4

    def __exit__(self, *_):
        # What is still on its way through the server belongs to the recording.
        goal = self.length() + SAMPLE_RATE // 2
        try:
            wait_for(lambda: self.length() >= goal, "the end of the recording")
        finally:
            self.process.terminate()
            self.process.wait(10)
            self.reader.join(10)
            self.process.stdout.close()

    def time_of(self, sample):
        """The clock time at which that sample was recorded, late by no more than the recording's latency.

        Taken from the earliest arrival in the second after it: over the whole recording the clocks drift apart.
        """
        with self.lock:
            return min(now - (count - sample) / SAMPLE_RATE for now, count in self.arrivals
                       if sample <= count <= sample + SAMPLE_RATE)

    def lost(self):
        """How many seconds of sound the server left out.

        It runs by the clock, so a recording which falls behind the clock lacks cycles that the machine gave
        the server no time for: nothing a program could have played then would have been heard. The earliest
        arrival of each second is compared, because single ones may be late without any loss.
        """
        earliest = {}
        with self.lock:
            for now, count in self.arrivals:
                origin = now - count / SAMPLE_RATE
                earliest[int(now)] = min(origin, earliest.get(int(now), origin))
        # The first and last second may hold a single arrival.
        origins = [earliest[second] for second in sorted(earliest)][1:-1]
        return max(origins) - min(origins)

    def samples(self):
        with self.lock:
            return array.array("f", bytes(self.data[:len(self.data) // 4 * 4]))


@dataclass
class Heard:
    """Where a token was found in a recording, and how many of its samples follow without a gap."""
    start: int
    count: int
    total: int
    # How many other samples came before it went on; None when it did not go on: it was cut off.
    gap: int | None = None

    @property
    def end(self):
        return self.start + self.count

    def __str__(self):
        text = f"{self.count} of {self.total} samples heard"
        if self.count == self.total:
            return text
        return text + (f", then a gap of {self.gap}" if self.gap is not None else ", then no more")


# A server that converts the samples on their way may be off in the last places.
CLOSE = 1e-6
# So many samples alike behind the first audible one are no chance.
HEAD = 64


def find_token(recording, token, start):
    """Looks for the token from sample `start` on and counts how many of its samples follow one another.

    `recording` and `token` are arrays of 32-bit floats. The token's beginning decides where it is: a whole
    one further on may be another presentation, and must not hide that this one was cut short.
    """
    first = next(index for index, value in enumerate(token) if abs(value) > 1e-3)
    head = token[:first + HEAD]
    data = recording.tobytes()
    at = data.find(head.tobytes(), start * 4)
    while at >= 0 and at % 4:
        at = data.find(head.tobytes(), at + 1)
    begin = at // 4 if at >= 0 else find_close(recording, head, start)
    if begin is None:
        return Heard(start, 0, len(token))
    if recording[begin:begin + len(token)] == token:
        return Heard(begin, len(token), len(token))
    count = count_close(recording, token, begin)
    following = token[count:count + HEAD].tobytes()
    later = data.find(following, (begin + count) * 4, (begin + len(token) + SAMPLE_RATE) * 4)
    gap = later // 4 - begin - count if following and later >= 0 else None
    return Heard(begin, count, len(token), gap)


def count_close(recording, token, begin):
    count = 0
    while (count < len(token) and begin + count < len(recording)
           and abs(recording[begin + count] - token[count]) <= CLOSE):
        count += 1
    return count


def find_close(recording, head, start):
    for begin in range(start, len(recording) - len(head)):
        if (abs(recording[begin + len(head) - 1] - head[-1]) <= CLOSE
                and count_close(recording, head, begin) == len(head)):
            return begin
    return None
