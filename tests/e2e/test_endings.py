# SPDX-License-Identifier: GPL-3.0-or-later
"""Ends sessions in every way, on disks of every kind: no answer may be lost, and no session held up.

    scripts/private-session.sh --audio --display /usr/bin/python3 tests/e2e/test_endings.py PROGRAM TOOLS SHIM

SHIM is the library made of disk_shim.cpp. Names of tests run those; "--shared FILE" runs those that no other
process has taken that was started with the same file, which is empty at first. The longest come first.
"""

import contextlib
import hashlib
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import ostrine_driver as driver
from journals import (SAFE_AFTER, answers_of, check_answers, check_head, check_restored, lines_of, require,
                      result_texts)
from sittings import SHORT, Session, Sitting, make_tokens, press_close_box, shared

PROGRAM = None
TOOLS = None
SHIM = None

# Seconds. Long enough to be met while it plays.
LONG = 0.8
# The program sees to its journal in its own time, but without being asked.
SOON = SAFE_AFTER


@contextlib.contextmanager
def other_display():
    """A second X server, with a window manager, on which programs started meanwhile are shown."""
    first = os.environ["DISPLAY"]
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1440x900x24", "-dpi", "96", "-nolisten", "tcp",
         "-noreset"], pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL)
    manager = None
    try:
        os.close(writer)
        with os.fdopen(reader) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        manager = subprocess.Popen(["openbox", "--sm-disable"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        driver.wait_for(lambda: "window id" in subprocess.run(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True).stdout, "the second window manager")
        yield server
    finally:
        os.environ["DISPLAY"] = first
        for process in (server, manager):
            if process is not None:
                process.kill()
                process.wait()


class EndingsTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="ostrine-test."))
        self.addCleanup(shutil.rmtree, self.folder)
        self.full = self.folder / "full"
        self.slow = self.folder / "slow"
        self.snapshots = self.folder / "snapshots"
        self.snapshots.mkdir()

    def start(self):
        return Sitting(PROGRAM, self.folder)

    def start_on_shim(self):
        return Sitting(PROGRAM, self.folder, LD_PRELOAD=str(SHIM), DISK_FULL=str(self.full),
                       DISK_SLOW=str(self.slow), DISK_SNAPSHOTS=str(self.snapshots))

    def prepare(self, sitting, count=3, seconds=SHORT):
        """Prepares a session with one presentation of each of so many tokens."""
        tokens = self.folder / f"tokens-{count}-{seconds}"
        if not tokens.exists():
            make_tokens(tokens, count, seconds)
        sitting.prepare("Practice", tokens)
        return driver.token_names(tokens)

    def check_journal(self, journal, session, tokens, end, saved=None, **parameters):
        """The journal must tell the whole session: head, answers, end and files saved, and nothing else."""
        lines = lines_of(journal.read_bytes())
        check_head(lines, tokens, **parameters)
        check_answers(lines, session.presses)
        types = ["session"] + ["answer"] * len(session.presses)
        if end is not None:
            types.append("end")
            self.assertEqual([line["end"] for line in lines if line["type"] == "end"], [end])
        if saved is not None:
            types.append("save")
            files = [(file["path"], file["sha256"]) for file in lines[-1]["files"]]
            self.assertEqual(files, saved)
        self.assertEqual([line["type"] for line in lines], types)
        check_restored(TOOLS, self.folder / "data", journal, self.folder / "restored" / journal.stem)
        return lines

    def saved_files(self, records, missing=()):
        """(path, sha256) of the three files that a save to that path left; "" of those it could not write."""
        paths = [records, records.with_name(f"{records.stem}_entries.txt"),
                 records.with_name(f"{records.stem}_parameters.txt")]
        return [(str(path), "" if path in missing else hashlib.sha256(path.read_bytes()).hexdigest())
                for path in paths]

    def finish(self, session, count):
        """Gives the answers that are still missing of so many."""
        while len(session.presses) < count:
            session.answer()
        session.sitting.save_dialog()

    # --- The power fails, the disk is slow -----------------------------------------------------------------

    def safe_at(self, press):
        """The clock time from which a power cut would have left that answer, or None."""
        times = [int(path.name.split("-")[1]) / 1e9 for path in self.snapshots.glob("*.jsonl")
                 if press.trial <= len(answers_of(lines_of(path.read_bytes())))]
        return min(times, default=None)

    # Catches answers that the system has not been told to write to the disk, or too late; a journal whose
    # name is not on the disk; and a window that waits for the disk, which would delay the next token.
    def test_answers_survive_power_cuts_and_wait_for_no_disk(self):
        per_disk = 5
        delays = [0, 300, 2000]
        with self.start_on_shim() as sitting:
            count = per_disk * len(delays)
            tokens = self.prepare(sitting, count=count)
            session = Session(sitting)
            session.ready()
            for trial in range(1, count + 1):
                if (trial - 1) % per_disk == 0:
                    self.slow.write_text(str(delays[(trial - 1) // per_disk]))
                session.answer(delay=0.05)
            sitting.save_dialog()
            records = self.folder / "results.txt"
            session.save(records)
            session.leave()
            self.assertEqual(sitting.quit(), 0)

            [journal] = sitting.journals()
            self.check_journal(journal, session, tokens, "finished", self.saved_files(records))

            folders = [int(path.name.split("-")[1]) / 1e9 for path in self.snapshots.glob("*-sessions")]
            require(folders and min(folders) <= session.ready_at + SAFE_AFTER,
                    "a power cut could have left the folder without the journal")
            ages = []
            for press in session.presses[:2 * per_disk]:
                safe_at = self.safe_at(press)
                require(safe_at is not None, f"answer {press.trial} has never been safe from a power cut")
                ages.append(safe_at - press.given)
                require(ages[-1] < SAFE_AFTER,
                        f"a power cut could have taken answer {press.trial} after {ages[-1]:.3f} s")

            def waits(disk):
                """Seconds from each answer to the end of the next token."""
                presses = session.presses[disk * per_disk:(disk + 1) * per_disk]
                return [session.heard_by[press.trial + 1] - press.given for press in presses
                        if press.trial < count]

            typical = [statistics.median(waits(disk)) for disk in range(len(delays))]
            print(f"\nanswers were safe from a power cut after {1000 * statistics.median(ages[:per_disk]):.1f} ms "
                  f"(the longest {1000 * max(ages[:per_disk]):.1f} ms); on a disk that takes {delays[1]} ms "
                  f"more, after {1000 * statistics.median(ages[per_disk:]):.1f} ms (the longest "
                  f"{1000 * max(ages[per_disk:]):.1f} ms)")
            print("from an answer to the next: " + ", ".join(
                f"{1000 * wait:.0f} ms on a disk that takes {delay} ms more"
                for wait, delay in zip(typical, delays)), flush=True)
            for delay, wait in zip(delays[1:], typical[1:]):
                require(wait - typical[0] < 0.15,
                        f"a disk that takes {delay} ms more delays the next token by {wait - typical[0]:.3f} s")

    # Catches answers that wait for the disk one behind another, so that ever more would be lost with the
    # program.
    def test_a_kill_loses_no_answer_that_waits_for_a_slow_disk(self):
        self.slow.write_text("2000")
        with self.start_on_shim() as sitting:
            tokens = self.prepare(sitting, count=9)
            session = Session(sitting)
            session.ready()
            for _ in range(8):
                session.answer()
            killed = time.monotonic()
            sitting.process.kill()
            sitting.process.wait()
            [journal] = sitting.journals()
            lines = lines_of(journal.read_bytes())
            check_head(lines, tokens)
            check_answers(lines, session.presses, killed - SAFE_AFTER)

    # --- Saving goes wrong ---------------------------------------------------------------------------------

    # Catches a disk that is full for a result file and: is not reported, keeps another file from being
    # written, leaves a torn file, spoils a complete older one, or spoils the journal. And two sessions under
    # one name: what the second save overwrites is to be had from the first journal.
    def test_a_full_disk_costs_one_result_file_and_no_journal(self):
        records = self.folder / "results.txt"
        with self.start_on_shim() as sitting:
            told = []
            for number, part in enumerate(["", "_entries", "_parameters", None]):
                tokens = self.prepare(sitting, count=2)
                session = Session(sitting, seed=number)
                session.ready()
                self.finish(session, 2)
                missing = ()
                if part is None:
                    session.save(records)
                else:
                    failing = self.folder / f"results{part}.txt"
                    missing = (failing,)
                    before = failing.read_bytes() if failing.exists() else None
                    self.full.write_text(f"{failing}\n{failing}.*\n")
                    session.save(records)
                    self.assertEqual(sitting.close_warning().split(),
                                     f"could not write to file {failing}".split())
                    self.assertEqual(failing.read_bytes() if failing.exists() else None, before)
                    self.full.unlink()
                session.leave()
                told.append((session, tokens, self.saved_files(records, missing)))
            self.assertEqual(sitting.quit(), 0)
            for journal, (session, tokens, saved) in zip(sitting.journals(), told, strict=True):
                self.check_journal(journal, session, tokens, "finished", saved)
            self.assertEqual(set(self.folder.glob("results*")), {Path(path) for path, _ in told[-1][2]})

    # Catches a save whose failure is not in the journal, and one that spoils it.
    def test_a_cancelled_save_dialog_is_in_the_journal(self):
        with self.start() as sitting:
            tokens = self.prepare(sitting, count=2)
            session = Session(sitting)
            session.ready()
            self.finish(session, 2)
            driver.xdotool("key", "Escape")
            self.assertIn("could not open file for writing", sitting.close_warning())
            session.leave()
            self.assertEqual(sitting.quit(), 0)
            [journal] = sitting.journals()
            lines = lines_of(journal.read_bytes())
            saved = [(file["path"], file["sha256"]) for file in lines[-1]["files"]]
            # The other two get names of their own in the folder that the program was started in.
            home = Path(os.environ["HOME"])
            self.assertEqual(saved[0], ("", ""))
            for (path, digest), name in zip(saved[1:], ("_entries.", "_parameters.")):
                self.assertEqual((home / path).name, name)
                self.assertEqual(digest, hashlib.sha256((home / name).read_bytes()).hexdigest())
                (home / name).unlink()
            self.check_journal(journal, session, tokens, "finished", saved)

    # --- The session is broken off by the subject window --------------------------------------------------

    # Catches a journal that is not closed with its session: an end that is missing, or lines of one session
    # in another one's journal.
    def test_breaking_off_ends_the_journal_in_each_state(self):
        with self.start() as sitting:
            told = []

            def broken_off(reach_state, **parameters):
                tokens = self.prepare(sitting, seconds=LONG)
                session = Session(sitting)
                reach_state(session)
                session.break_off()
                told.append((session, tokens, parameters))

            def not_ready(session):
                pass

            def before_the_first_token(session):
                session.ready()

            def while_a_token_plays(session):
                session.ready()
                time.sleep(1.0 + LONG + LONG / 2)

            def while_the_subject_may_answer(session):
                session.ready()
                session.answer()
                session.await_answering()

            def while_the_answer_is_shown(session):
                session.ready()
                session.answer()

            broken_off(not_ready)
            broken_off(before_the_first_token)
            broken_off(while_a_token_plays)
            broken_off(while_the_subject_may_answer)
            sitting.switch("Play sound automatically")
            broken_off(while_the_answer_is_shown, autoPlay=False)
            self.assertEqual(sitting.quit(), 0)

            journals = sitting.journals()
            self.assertEqual(len(journals), len(told) - 1)
            for journal, (session, tokens, parameters) in zip(journals, told[1:]):
                self.check_journal(journal, session, tokens, "broken off", **parameters)

    # --- The operator's window is closed ------------------------------------------------------------------

    def close_in_state(self, reach_state, end="quit", feedback=False, sitting=None):
        """Presses the close box in a state of the session; the program must end, the journal be complete."""
        with sitting or self.start() as sitting:
            if feedback:
                sitting.switch("Play sound automatically")
            tokens = self.prepare(sitting, seconds=LONG)
            session = Session(sitting)
            reach_state(session)
            press_close_box(driver.MAIN_WINDOW)
            self.assertEqual(sitting.process.wait(driver.PATIENCE), 0, sitting.log())
            if end is None:
                self.assertEqual(sitting.journals(), [])
            else:
                [journal] = sitting.journals()
                self.check_journal(journal, session, tokens, end, autoPlay=not feedback)

    # Catches a journal of a session that nobody was ready for.
    def test_closing_before_the_subject_is_ready_leaves_no_journal(self):
        self.close_in_state(lambda session: None, end=None)

    # Catches a journal without its head or end when there are no answers yet.
    def test_closing_before_the_first_token_leaves_a_journal_without_answers(self):
        self.close_in_state(lambda session: session.ready())

    # Catches a last answer, or the end, that is not waited for when the program ends.
    def test_closing_while_a_token_plays_ends_the_journal(self):
        def reach_state(session):
            session.ready()
            session.answer()
            # In the middle of the second token.
            time.sleep(1.0 + LONG + LONG / 2)

        self.close_in_state(reach_state)

    # Catches the same while the subject may answer; and a close box that is heard while the subject is asked.
    def test_closing_while_the_subject_may_answer_ends_the_journal(self):
        def reach_state(session):
            session.ready()
            session.answer()
            session.await_answering()
            driver.close_window(driver.SUBJECT_WINDOW)
            session.sitting.window(driver.CONFIRMATION)
            press_close_box(driver.MAIN_WINDOW)
            time.sleep(0.5)
            session.subject.reply("No")
            session.answer()
            session.await_answering()

        self.close_in_state(reach_state)

    # Catches the same after an answer; and a program that ends before a slow disk has taken everything.
    def test_closing_while_the_answer_is_shown_ends_the_journal(self):
        def reach_state(session):
            session.ready()
            session.answer()
            session.next()
            self.slow.write_text("2000")
            session.answer()
            following = session.subject.button("Next")
            driver.wait_for(lambda: driver.is_enabled(following), "'Next' to be enabled")

        self.close_in_state(reach_state, feedback=True, sitting=self.start_on_shim())

    # Catches a second end after the first, a close box that is heard while the save dialog is open, saved
    # files that are not what the journal says, and answers or files that differ from what is restored of the
    # journal.
    def test_closing_after_the_save_adds_nothing_to_the_journal(self):
        with self.start() as sitting:
            tokens = self.prepare(sitting)
            session = Session(sitting)
            session.ready()
            self.finish(session, 3)
            press_close_box(driver.MAIN_WINDOW)
            time.sleep(0.5)
            records = self.folder / "results.txt"
            session.save(records)
            driver.wait_for((self.folder / "results_parameters.txt").exists, "the last of the files")
            session.subject.button("Done")
            press_close_box(driver.MAIN_WINDOW)
            self.assertEqual(sitting.process.wait(driver.PATIENCE), 0, sitting.log())
            [journal] = sitting.journals()
            lines = self.check_journal(journal, session, tokens, "finished", self.saved_files(records))
            for path, text in result_texts(lines, records).items():
                self.assertEqual(path.read_bytes().decode(), text)

    # Catches a program that ends without a part of the journal when it is quit, also right after a session
    # without a save; and "Quit" that can be pressed in a session.
    def test_quitting_leaves_a_whole_journal(self):
        with self.start() as sitting:
            quit_button = sitting.main_button("Quit")
            sitting.switch("Save data to file")
            tokens = self.prepare(sitting, count=2)
            session = Session(sitting)
            session.ready()
            session.answer()
            self.assertFalse(driver.is_enabled(quit_button))
            driver.point_at(quit_button)
            driver.xdotool("click", 1)
            session.answer()
            session.leave()
            self.assertEqual(sitting.quit(), 0)
            [journal] = sitting.journals()
            self.check_journal(journal, session, tokens, "finished", saveData=False)

    # --- The program is ended from outside -----------------------------------------------------------------

    # Catches answers that are kept in memory until they have been saved, and a program that hangs without its
    # screen.
    def test_answers_survive_the_end_of_the_display(self):
        with other_display() as server, self.start() as sitting:
            tokens = self.prepare(sitting, count=5)
            session = Session(sitting)
            session.ready()
            for _ in range(4):
                session.answer()
            ended = time.monotonic()
            server.kill()
            self.assertEqual(sitting.process.wait(driver.PATIENCE), 1, sitting.log())
            [journal] = sitting.journals()
            lines = lines_of(journal.read_bytes())
            check_head(lines, tokens)
            check_answers(lines, session.presses, ended)
            check_restored(TOOLS, sitting.data_home, journal, self.folder / "restored")

    # Catches answers that are kept in memory until they have been saved: the save dialog may be open for
    # long.
    def test_answers_survive_a_kill_while_the_save_dialog_is_open(self):
        with self.start() as sitting:
            tokens = self.prepare(sitting)
            session = Session(sitting)
            session.ready()
            self.finish(session, 3)
            time.sleep(max(0.0, session.presses[-1].given + SOON - time.monotonic()))
            sitting.process.kill()
            sitting.process.wait()
            [journal] = sitting.journals()
            self.check_journal(journal, session, tokens, "finished")

    # --- The journal cannot be written ---------------------------------------------------------------------

    # Catches a session that a full disk stops or that asks anybody about it, lines that are lost or torn for
    # good when there is room again, and a log that fills up.
    def test_a_full_disk_does_not_stop_a_session_and_its_journal_catches_up(self):
        with self.start_on_shim() as sitting:
            self.full.write_text("*/sessions/*\n")
            tokens = self.prepare(sitting, count=6)
            session = Session(sitting)
            session.ready()
            session.answer()
            session.answer()
            self.full.unlink()
            session.answer()
            time.sleep(SOON)
            [journal] = sitting.journals()
            check_answers(lines_of(journal.read_bytes()), session.presses)
            self.full.write_text("*/sessions/*\n")
            session.answer()
            time.sleep(SOON)
            lines = lines_of(journal.read_bytes())
            self.assertEqual(check_answers(lines, session.presses[:3]), 3)
            self.full.unlink()
            session.answer()
            time.sleep(SOON)
            check_answers(lines_of(journal.read_bytes()), session.presses)
            self.finish(session, 6)
            records = self.folder / "results.txt"
            session.save(records)
            session.leave()
            self.assertEqual(sitting.quit(), 0)
            self.check_journal(journal, session, tokens, "finished", self.saved_files(records))
            self.assertEqual(sitting.logged("journal"), 1, sitting.log())

    # Catches a session that does not go on, is not saved or cannot be left when its journal cannot even be
    # begun.
    def test_a_session_works_without_a_journal(self):
        with self.start() as sitting:
            sitting.data_home.mkdir(exist_ok=True)
            (sitting.data_home / "ostrine").write_text("in the way")
            tokens = self.prepare(sitting, count=2)
            session = Session(sitting)
            session.ready()
            self.finish(session, 2)
            records = self.folder / "results.txt"
            session.save(records)
            session.leave()
            self.assertEqual(sitting.quit(), 0)
            self.assertEqual(sitting.logged("journal"), 1, sitting.log())
            entries = (self.folder / "results_entries.txt").read_text().split("\n")[1:]
            self.assertEqual([(line.split("\t")[0], line.split("\t")[2]) for line in entries],
                             [(press.token, press.response) for press in session.presses])
            self.assertEqual(len(records.read_text().split("\n")), 1 + len(tokens))


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    PROGRAM, TOOLS, SHIM = (Path(sys.argv.pop(1)).resolve() for _ in range(3))
    if sys.argv[1:2] == ["--shared"]:
        todo = shared([name for name in vars(EndingsTest) if name.startswith("test_")], sys.argv[2])
    else:
        todo = sys.argv[1:] or [name for name in vars(EndingsTest) if name.startswith("test_")]
    # The accessibility bindings use deprecated calls of their own library.
    runner = unittest.TextTestRunner(verbosity=2, warnings="ignore")
    all_passed = True
    for name in todo:
        driver.start_watchdog(150)
        all_passed &= runner.run(EndingsTest(name)).wasSuccessful()
    sys.exit(not all_passed)
