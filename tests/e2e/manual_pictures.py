# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the pictures of README.md and docs/manual.md from the running programs.

Three sessions with the example tokens, as operator and subject would do them, and then a look at them with the
companion. Every picture is taken from the screen. scripts/screenshots.sh runs this where the home folder
has a path that fits a manual.

    manual_pictures.py PROGRAM TOOLS FOLDER_OF_PICTURES
"""

import math
import os
import random
import shutil
import struct
import subprocess
import sys
import time
import wave
from pathlib import Path

import ostrine_driver as driver
import pyatspi

TOOLS_WINDOW = "Ostrine Tools"
# As many as the windows have; lines and letters stay sharp, and the files small.
COLOURS = 96


class Pictures:
    def __init__(self, folder):
        self.folder = folder

    def path(self, name):
        return self.folder / f"{name}.png"

    def _take(self, name, *options):
        subprocess.run(["import", "-silent", "-window", "root", *options, "-strip", "+dither", "-colors", str(COLOURS),
                        f"png8:{self.path(name)}"], check=True, timeout=driver.PATIENCE)
        print(f"{name}: {self.path(name).stat().st_size // 1000} KB", flush=True)

    def window(self, name, title_end):
        """The window with its title bar."""
        time.sleep(0.5)  # it may still be drawing
        left, top, width, height = frame_of(title_end)
        self._take(name, "-crop", f"{width}x{height}+{left}+{top}", "+repage")

    def screen(self, name):
        time.sleep(0.5)
        self._take(name, "-resize", "50%")

    def beside(self, name, *others):
        """Pictures that are there already, side by side."""
        subprocess.run(["convert", *(str(self.path(other)) for other in others), "-bordercolor", "white", "-border",
                        "8x0", "+append", "-shave", "8x0", "-strip", f"png8:{self.path(name)}"],
                       check=True, timeout=driver.PATIENCE)

    def remove(self, *names):
        for name in names:
            self.path(name).unlink()


def output_of(*command):
    return subprocess.run(command, check=True, timeout=driver.PATIENCE, stdout=subprocess.PIPE, text=True).stdout


def frame_of(title_end):
    """(left, top, width, height) of a window with what the window manager puts around it."""
    window = driver.bring_forward(title_end)
    time.sleep(0.3)
    facts = dict(line.strip().split(":", 1) for line in output_of("xwininfo", "-id", window).split("\n")
                 if line.strip().split(":")[0] in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
    x, y, width, height = (int(facts[key]) for key in
                           ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
    extents = output_of("xprop", "-id", window, "_NET_FRAME_EXTENTS").split("=")[1]
    left, right, top, bottom = (int(number) for number in extents.split(","))
    return x - left, y - top, width + left + right, height + top + bottom


class Tools(driver.Ostrine):
    def __enter__(self):
        self.main = self.window(TOOLS_WINDOW)
        return self

    def open_page(self, name):
        tab = driver.wait_for(lambda: driver.find(self.main, pyatspi.ROLE_PAGE_TAB, name), f"the page '{name}'")
        driver.point_at(tab)
        driver.xdotool("click", 1)


def faulty_tokens(folder):
    """A few of the example tokens, and some with what is found most often in new recordings."""
    driver.copy_tokens(["MOV001_01.wav", "MOV001_02.wav", "MOV002_01.wav"], folder)
    noise = random.Random(1)

    def write(name, rate, channels, length, sample):
        with wave.open(str(folder / name), "wb") as writer:
            writer.setnchannels(channels)
            writer.setsampwidth(2)
            writer.setframerate(rate)
            writer.writeframes(b"".join(struct.pack("<h", int(sample(index / rate))) * channels
                                        for index in range(int(length * rate))))

    def voice(seconds, level=9000.0, end=0.5):
        fade = min(1.0, seconds / 0.02, max(0.0, end - seconds) / 0.03)
        return fade * level * (math.sin(1400 * seconds) + 0.4 * math.sin(4200 * seconds) + 0.05 * noise.gauss(0, 1))

    write("MOV001_03.wav", 44100, 1, 0.5, voice)
    write("MOV002_02.wav", 48000, 2, 0.5, voice)
    write("MOV002_03.wav", 48000, 1, 0.5, lambda t: max(-32768, min(32767, voice(t, 45000))))
    write("MOV002_04.wav", 48000, 1, 0.8, voice)
    shutil.copyfile(driver.TOKEN_FOLDER / "MOV001_04.wav", folder / "MOV001_04.wav")
    with open(folder / "MOV001_04.wav", "r+b") as file:
        file.truncate(20000)


def type_folder(program, folder):
    dialog = program.window("Select a folder")
    field = driver.wait_for(lambda: driver.find_field(dialog, "Directory:"), "the folder dialog's name field")
    driver.type_into(field, str(folder))


def await_go(program):
    driver.wait_for(lambda: driver.is_enabled(program.main_button("Go")), "'Go' to be enabled")


def right(token):
    return driver.category(token)


def wrong(token):
    return driver.other(driver.category(token))


def practice(program, tokens, pictures):
    """A whole practice session."""
    pictures.window("operator-start", driver.MAIN_WINDOW)
    empty = Path.home() / "empty"
    empty.mkdir()
    driver.press(program.main_button("Practice"))
    type_folder(program, empty)
    driver.xdotool("key", "Return")
    program.window("Question")
    pictures.window("no-tokens", "Question")
    driver.xdotool("key", "Return")
    type_folder(program, tokens)
    pictures.window("folder-dialog", "Select a folder")
    driver.xdotool("key", "Return")
    await_go(program)
    pictures.window("operator-prepared", driver.MAIN_WINDOW)

    subject = program.go()
    driver.settled_box(subject.window)
    pictures.window("subject-ready", driver.SUBJECT_WINDOW)
    subject.ready()
    pictures.window("subject-listening", driver.SUBJECT_WINDOW)
    subject.await_answering()
    pictures.window("subject-answering", driver.SUBJECT_WINDOW)
    subject.answer(right, 0.2)
    pictures.window("subject-correct", driver.SUBJECT_WINDOW)
    subject.answer(wrong, 0.2)
    pictures.window("subject-incorrect", driver.SUBJECT_WINDOW)
    count = len(driver.token_names(tokens))
    for number in range(2, count):
        subject.answer(wrong if number == 5 else right, 0.1 + 0.07 * number)
    program.save_dialog()
    pictures.window("save-dialog", "Save a file")
    driver.xdotool("key", "Return")
    driver.wait_for(lambda: not program.find_window("Save a file"), "the save dialog to close")
    pictures.window("subject-done", driver.SUBJECT_WINDOW)
    subject.request_close()
    pictures.window("confirm-close", driver.CONFIRMATION)
    subject.confirm()
    driver.wait_for(lambda: driver.is_enabled(program.main_button("Experiment")), "'Experiment' to be enabled")
    pictures.window("operator-window", driver.MAIN_WINDOW)
    pictures.beside("subject-window", "subject-answering", "subject-correct")
    pictures.beside("subject-feedback", "subject-correct", "subject-incorrect")
    pictures.remove("subject-correct", "subject-incorrect")


def maximise(title_end):
    left, top, width, _ = frame_of(title_end)
    driver.xdotool("mousemove", left + width // 2, top + 8, "click", "--repeat", 2, "--delay", 100, 1)
    time.sleep(0.5)


def experiment(program, tokens, pictures):
    """An experiment with "Next", on a screen of the subject's own at first; broken off."""
    box = program.main_check_box("Play sound automatically")
    driver.press(box)
    driver.wait_for(lambda: not driver.is_checked(box), "'Play sound automatically' to be off")
    driver.type_into(program.main_field("N times per token"), "4")
    program.prepare("Experiment", tokens)
    pictures.window("operator-experiment", driver.MAIN_WINDOW)
    subject = program.go()
    driver.settled_box(subject.window)
    maximise(driver.SUBJECT_WINDOW)
    subject.ready()
    subject.await_answering()
    pictures.screen("subject-screen")
    maximise(driver.SUBJECT_WINDOW)
    for number in range(5):
        subject.answer(right, 0.2 + 0.1 * number)
        following = subject.button("Next")
        driver.wait_for(lambda: driver.is_enabled(following), "'Next' to be enabled")
        if number == 0:
            driver.point_at(following)
            pictures.window("subject-next", driver.SUBJECT_WINDOW)
        driver.press(following)
    driver.close_window(driver.SUBJECT_WINDOW)
    subject.confirm()
    driver.wait_for(lambda: driver.is_enabled(program.main_button("Practice")), "'Practice' to be enabled")


def unsaved_session(program, tokens, pictures):
    """A short session whose save dialog is cancelled."""
    driver.type_into(program.main_field("Session"), "2")
    driver.type_into(program.main_field("N times per token"), "1")
    program.prepare("Practice", tokens)
    subject = program.go()
    subject.ready()
    for number in range(len(driver.token_names(tokens))):
        if number > 0:
            driver.press(subject.button("Next"))
        subject.answer(right, 0.3)
    program.save_dialog()
    driver.xdotool("key", "Escape")
    program.window("Warning")
    pictures.window("save-cancelled", "Warning")
    driver.xdotool("key", "Return")
    subject.leave()


def look_at_tokens(tools, pictures, tokens):
    tools.open_page("Tokens")

    def check(folder):
        field = driver.wait_for(lambda: driver.find(tools.main, pyatspi.ROLE_TEXT, "Folder of the tokens"),
                                "the folder's field")
        driver.type_into(field, str(folder))
        driver.xdotool("key", "Return")
        time.sleep(1)  # the check has begun
        table = driver.wait_for(lambda: driver.find(tools.main, pyatspi.ROLE_PUSH_BUTTON, "Export the table"),
                                "the button to export the table")
        driver.wait_for(lambda: driver.is_enabled(table), "the check to end")
        time.sleep(2)  # the charts follow a little later

    check(tokens)
    pictures.window("tools-tokens", TOOLS_WINDOW)
    recordings = Path.home() / "new-recordings"
    faulty_tokens(recordings)
    check(recordings)
    driver.xdotool("key", "Down", "Down")
    time.sleep(1)
    pictures.window("tools-findings", TOOLS_WINDOW)


def look_at_timing(tools, pictures):
    tools.open_page("Timing")
    start = driver.wait_for(lambda: driver.find(tools.main, pyatspi.ROLE_PUSH_BUTTON, "Start"), "'Start'")
    driver.press(start)
    driver.wait_for(lambda: not driver.is_enabled(start), "the measurement to begin")
    # Asked seldom, because each question holds the companion up while it measures.
    driver.wait_for(lambda: driver.is_enabled(start), "the measurement to end", patience=240, interval=5)
    pictures.window("tools-timing", TOOLS_WINDOW)


def look_at_sessions(tools, pictures):
    tools.open_page("Sessions")
    driver.wait_for(lambda: driver.is_enabled(
        driver.find(tools.main, pyatspi.ROLE_PUSH_BUTTON, "Restore…")), "the sessions to be listed")
    pictures.window("tools-sessions", TOOLS_WINDOW)
    driver.press(driver.find(tools.main, pyatspi.ROLE_PUSH_BUTTON, "Restore…"))
    tools.window("Restore the records file")
    pictures.window("tools-restore", "Restore the records file")
    driver.xdotool("key", "Return")
    tools.window("Restored")
    pictures.window("tools-restored", "Restored")


def main(program, tools, folder):
    driver.start_watchdog(600)
    pictures = Pictures(folder)
    tokens = Path.home() / "tokens"
    shutil.copytree(driver.TOKEN_FOLDER, tokens)
    log = Path(os.environ["XDG_RUNTIME_DIR"]) / "program.log"
    with driver.Ostrine(program, log) as ostrine:
        driver.settled_box(ostrine.main)
        practice(ostrine, tokens, pictures)
        experiment(ostrine, tokens, pictures)
        unsaved_session(ostrine, driver.copy_tokens(["MOV001_01.wav", "MOV002_01.wav"], Path.home() / "two"),
                        pictures)
    with Tools(tools, log) as companion:
        driver.settled_box(companion.main)
        look_at_tokens(companion, pictures, tokens)
        look_at_timing(companion, pictures)
        look_at_sessions(companion, pictures)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*(Path(argument).resolve() for argument in sys.argv[1:]))
