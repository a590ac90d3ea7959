# SPDX-License-Identifier: GPL-3.0-or-later
"""Whole sessions with the program as it is shipped: what is written, and what is heard.

    scripts/private-session.sh --audio --display /usr/bin/python3 tests/e2e/test_sessions.py PROGRAM
"""

import shutil
import sys
import tempfile
import time
import unittest
from pathlib import Path

import ostrine_driver as driver

PROGRAM = None
# In the program's order, which is by name.
TOKENS = ["MOV001_01.wav", "MOV001_02.wav", "MOV002_01.wav"]
# Seconds: most of one cycle of the sound server. Undisturbed recordings stay below 3 ms.
LOST_LIMIT = 0.015


def number_text(value):
    """A number as the result files show it."""
    return f"{value:.6g}"


class SessionTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="ostrine-test."))
        self.addCleanup(shutil.rmtree, self.folder)
        self.tokens = driver.copy_tokens(TOKENS, self.folder / "tokens")
        # Neither of them is a token.
        (self.tokens / "notes.txt").write_text("not a sound")
        (self.tokens / "folder.wav").mkdir()

    def start(self):
        return driver.Ostrine(PROGRAM, self.folder / "program.log")

    def run_session(self, ostrine, subject, recorder, count, kind, wait_for_next=False):
        """Answers all presentations, every third one wrongly; returns the trials."""
        subject.ready()
        trials = []
        for number in range(count):
            def choose(token):
                right = driver.category(token)
                return driver.other(right) if number % 3 == 1 else right

            trial = subject.answer(choose, delay=0.15 + 0.07 * number)
            self.assertEqual(trial.status, f"{kind} {number + 1}/{count}")
            trials.append(trial)
            if wait_for_next and number + 1 < count:
                following = subject.button("Next")
                driver.wait_for(lambda: driver.is_enabled(following), "'Next' to be enabled")
                # Nothing goes on by itself: longer than any token's delay, no sound and no new token.
                heard_before = recorder.length()
                time.sleep(2.0)
                silence = recorder.samples()[heard_before:]
                self.assertGreater(len(silence), driver.SAMPLE_RATE)
                self.assertFalse(any(silence), "a token was played without 'Next'")
                self.assertEqual(ostrine.read("Status"), f"{kind} {number + 1}/{count}")
                driver.press(following)
        return trials

    def finish(self, ostrine, subject, kind):
        """Checks the proposed name, saves elsewhere and closes; returns the records file."""
        _, field = ostrine.save_dialog()
        self.assertEqual(driver.text_of(field), f"CHD001_{kind}001.txt")
        records = self.folder / f"results_{kind}.txt"
        ostrine.save_as(records)
        subject.leave()
        driver.wait_for(lambda: driver.is_enabled(ostrine.main_button("Experiment")),
                        "the operator's window to be usable again")
        self.assertFalse(driver.is_enabled(ostrine.main_button("Go")))
        return records

    def check_files(self, records, trials, n_times, kind_index, feedback, auto_play):
        stem = records.stem
        entries = records.with_name(f"{stem}_entries.txt")
        parameters = records.with_name(f"{stem}_parameters.txt")

        # Entries: one line per presentation, in the order presented, the last without a line break.
        lines = entries.read_bytes().decode().split("\n")
        self.assertEqual(lines[0], "filename\tstim\tresp\tcorrectness\trt")
        self.assertEqual(len(lines), 1 + len(trials))
        times = {name: [] for name in TOKENS}
        for trial, line in zip(trials, lines[1:]):
            stim = driver.category(trial.token)
            correct = stim == trial.response
            *start, rt_text = line.split("\t")
            self.assertEqual(start, [trial.token, stim, trial.response, "1" if correct else "0"])
            self.assertRegex(rt_text, r"^\d+$")
            rt = float(rt_text)
            self.assertTrue(trial.least <= rt <= trial.most,
                            f"{line!r}: expected {trial.least:.0f} to {trial.most:.0f} ms")
            times[trial.token].append((trial.response, correct, rt))

        # Records: one line per token, in the folder's order.
        expected = "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n"
        for index, name in enumerate(TOKENS):
            answers = times[name]
            self.assertEqual(len(answers), n_times)

            def mean(values):
                return number_text(sum(values) / len(values)) if values else "0"

            expected += "\t".join([
                name,
                str(sum(response == "mother" for response, _, _ in answers)),
                str(sum(response == "stranger" for response, _, _ in answers)),
                mean([rt for _, _, rt in answers]),
                mean([rt for _, correct, rt in answers if correct]),
                mean([rt for _, correct, rt in answers if not correct])])
            # The line break depends on the number of presentations, not on that of the tokens.
            if index < len(trials) - 1:
                expected += "\n"
        self.assertEqual(records.read_bytes().decode(), expected)

        self.assertEqual(parameters.read_bytes().decode().split("\n"), [
            "fs: 48000",
            "alwaysPlotEntireWaveformFlag: 1",
            "upperFrequencyToPlot: 2000",
            f"outputFilePath: {records}",
            f"wavFilePath: {self.tokens}",
            "subCode: CHD001",
            f"outputFileName: {records.name}",
            f"outputFileName_entries: {entries.name}",
            f"outputFileName_parameters: {parameters.name}",
            "sesTypeNames: practice, experiment",
            f"sesTypeIndex: {kind_index}",
            "soundTypeNames: .wav files, reserved",
            "soundTypeIndex: 0",
            "mainParameterNames: sound files, reserved",
            "mainParameterIndex: 0",
            "sesNum: 1",
            f"nTimes: {n_times}",
            "si: 1",
            "threshold: 0",
            "reactionTime: 0",
            "saveData: 1",
            f"feedBack: {feedback}",
            f"autoPlay: {auto_play}",
        ])

    def check_sound(self, session):
        """Runs the session; every presented token must be heard whole and in order, and nothing else.

        A machine which stops for a moment takes the sound server's time away. Where the recording itself
        proves that, the session says nothing about the program, good or bad, and is run again.
        """
        for attempt in range(1, 4):
            with driver.Recorder() as recorder:
                trials = session(recorder)
            problems = self.problems_heard(recorder, trials)
            lost = recorder.lost()
            if not problems or lost < LOST_LIMIT or attempt == 3:
                break
            print(f"the sound server lost {1000 * lost:.0f} ms of the recording "
                  f"({'; '.join(problems)}); once more", flush=True)
        self.assertEqual(problems, [], f"(the sound server lost {1000 * lost:.0f} ms)")

    def problems_heard(self, recorder, trials):
        recording = recorder.samples()
        tokens = {name: driver.samples_of(self.tokens / name) for name in TOKENS}
        position = 0
        heard_samples = 0
        lags = []
        problems = []
        rest = recording[:]
        for trial in trials:
            heard = driver.find_token(recording, tokens[trial.token], position)
            heard_samples += heard.count
            position = heard.end
            rest[heard.start:heard.end] = type(rest)("f", bytes(4 * heard.count))
            if heard.count != heard.total:
                problems.append(f"{trial.token}: {heard}")
            else:
                lags.append((trial.enabled_by - recorder.time_of(heard.end)) * 1000)
        if any(rest):
            problems.append("something else than whole tokens was heard")
        # An answer before the end of the sound would be timed from too early a moment. The recording's
        # latency makes its end look later than it was by some tens of milliseconds.
        if lags and min(lags) < -60:
            problems.append(f"answers were possible {-min(lags):.0f} ms before the end of a token")

        total = sum(len(tokens[trial.token]) for trial in trials)
        print(f"\n{self.id()}: {heard_samples} of {total} samples of {len(trials)} presentations heard "
              f"({100 * heard_samples / total:.3f} %)")
        if lags:
            print(f"answers possible {min(lags):.1f} .. {max(lags):.1f} ms after the recorded end of the token "
                  f"(mean {sum(lags) / len(lags):.1f} ms; the recording itself is late by its latency)",
                  flush=True)
        return problems

    def test_an_experiment_follows_the_practice(self):
        def session(recorder):
            with self.start() as ostrine:
                self.assertFalse(driver.is_enabled(ostrine.main_button("Experiment")))
                self.assertFalse(driver.is_enabled(ostrine.main_button("Go")))
                ostrine.prepare("Practice", self.tokens)
                subject = ostrine.go()
                driver.wait_for(lambda: not driver.is_enabled(ostrine.main),
                                "the operator's window to be disabled")
                practice = self.run_session(ostrine, subject, recorder, 3, "practice")
                self.check_files(self.finish(ostrine, subject, "practice"), practice,
                                 n_times=1, kind_index=0, feedback=1, auto_play=1)

                driver.type_into(ostrine.main_field("N times per token"), "2")
                ostrine.prepare("Experiment", self.tokens)
                subject = ostrine.go()
                experiment = self.run_session(ostrine, subject, recorder, 6, "experiment")
                self.check_files(self.finish(ostrine, subject, "experiment"), experiment,
                                 n_times=2, kind_index=1, feedback=1, auto_play=1)
                self.assertEqual(ostrine.quit(), 0)
            return practice + experiment

        self.check_sound(session)

    def test_each_further_token_waits_for_next_without_automatic_playing(self):
        def session(recorder):
            with self.start() as ostrine:
                driver.press(ostrine.main_check_box("Play sound automatically"))
                ostrine.prepare("Practice", self.tokens)
                subject = ostrine.go()
                trials = self.run_session(ostrine, subject, recorder, 3, "practice", wait_for_next=True)
                # The last answer ends the session without "Next".
                self.check_files(self.finish(ostrine, subject, "practice"), trials,
                                 n_times=1, kind_index=0, feedback=1, auto_play=0)
                self.assertEqual(ostrine.quit(), 0)
            return trials

        self.check_sound(session)

    def test_without_feedback_tokens_play_automatically(self):
        def session(recorder):
            with self.start() as ostrine:
                automatic = ostrine.main_check_box("Play sound automatically")
                feedback = ostrine.main_check_box("Provide feedback")
                driver.press(automatic)
                driver.wait_for(lambda: not driver.is_checked(automatic), "automatic playing to be off")
                driver.press(feedback)
                driver.wait_for(lambda: not driver.is_checked(feedback), "feedback to be off")
                driver.wait_for(lambda: driver.is_checked(automatic) and not driver.is_enabled(automatic),
                                "automatic playing to be forced on and locked")
                ostrine.prepare("Practice", self.tokens)
                subject = ostrine.go()
                trials = self.run_session(ostrine, subject, recorder, 3, "practice")
                self.assertIsNone(subject.find_button("Next"))
                self.check_files(self.finish(ostrine, subject, "practice"), trials,
                                 n_times=1, kind_index=0, feedback=0, auto_play=1)
                self.assertEqual(ostrine.quit(), 0)
            return trials

        self.check_sound(session)

    def test_a_confirmed_close_ends_the_session_without_files(self):
        with self.start() as ostrine:
            ostrine.prepare("Practice", self.tokens)
            subject = ostrine.go()
            subject.ready()
            subject.answer(driver.category, delay=0.1)
            # Closed as with the window's own close button; asked back, the subject stays, then goes.
            driver.close_window(driver.SUBJECT_WINDOW)
            subject.reply("No")
            subject.await_answering()
            driver.close_window(driver.SUBJECT_WINDOW)
            subject.confirm()
            driver.wait_for(lambda: driver.is_enabled(ostrine.main_button("Experiment")),
                            "the operator's window to be usable again")
            self.assertIsNone(ostrine.find_window("Save a file"))
            self.assertEqual(ostrine.quit(), 0)
        self.assertEqual(list(self.folder.glob("*.txt")), [])

    def test_quit_ends_the_program_whatever_is_pressed_behind_it(self):
        for behind in ("Practice", "Go"):
            with self.subTest(behind=behind), self.start() as ostrine:
                ostrine.prepare("Practice", self.tokens)
                points = [driver.middle_of(ostrine.main_button(text)) for text in ("Quit", behind)]
                with ostrine.held_up():
                    for point in points:
                        driver.click_at(point)
                self.assertEqual(ostrine.process.wait(driver.PATIENCE), 0)

    def test_quitting_a_session_takes_no_answer_any_more(self):
        results = Path.home() / "Desktop" / "CHD001"
        shutil.rmtree(results, ignore_errors=True)
        shutil.rmtree(self.tokens)
        driver.copy_tokens(TOKENS[:1], self.tokens)
        with self.start() as ostrine:
            ostrine.prepare("Practice", self.tokens)
            subject = ostrine.go()
            subject.ready()
            subject.await_answering()
            answer = driver.middle_of(subject.button("Mother"))
            with ostrine.held_up():
                driver.close_window(driver.MAIN_WINDOW)
                # The last answer of the session: the results would be saved.
                driver.bring_forward(driver.SUBJECT_WINDOW)
                driver.click_at(answer)
            self.assertEqual(ostrine.process.wait(driver.PATIENCE), 0)
        self.assertFalse(results.exists())

    def test_go_pressed_twice_starts_one_session(self):
        with self.start() as ostrine:
            ostrine.prepare("Practice", self.tokens)
            go = driver.middle_of(ostrine.main_button("Go"))
            with ostrine.held_up():
                driver.click_at(go)
                driver.click_at(go)
            subject = driver.Subject(ostrine, ostrine.window(driver.SUBJECT_WINDOW))
            driver.settled_box(subject.window)
            titles = [driver.name_of(window) for window in ostrine.windows()]
            self.assertEqual(len(titles), 2, titles)
            driver.close_window(driver.SUBJECT_WINDOW)
            subject.confirm()
            driver.wait_for(lambda: driver.is_enabled(ostrine.main_button("Experiment")),
                            "the operator's window to be usable again")
            self.assertEqual(ostrine.quit(), 0)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    PROGRAM = Path(sys.argv.pop(1)).resolve()
    driver.start_watchdog(400)
    # The accessibility bindings use deprecated calls of their own library.
    unittest.main(verbosity=2, warnings="ignore")
