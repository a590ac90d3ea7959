# SPDX-License-Identifier: GPL-3.0-or-later
"""The readers of docs/readers, run on result files that the program's own writer has made.

    python3 test_readers.py python|r OSTRINE_TOOLS [RSCRIPT]

Sessions are given to the writer as journals, and what the readers print is compared with figures that are
counted here, by other means, from the answers.
"""

import contextlib
import importlib
import io
import json
import math
import os
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
import warnings
from dataclasses import dataclass
from pathlib import Path

CHECKOUT = Path(__file__).resolve().parents[2]
READERS = CHECKOUT / "docs" / "readers"
JOURNAL = "20261122-080150-123"
PARAMETERS = {
    "fs": 48000, "alwaysPlotEntireWaveformFlag": 1, "upperFrequencyToPlot": 2000,
    "outputFilePath": "Desktop/CHD001", "wavFilePath": "Desktop/tokens", "subCode": "CHD001",
    "outputFileName": "CHD001_experiment003.txt", "outputFileName_entries": "CHD001_entries.txt",
    "outputFileName_parameters": "CHD001_parameters.txt", "sesTypeNames": ["practice", "experiment"],
    "sesTypeIndex": 1, "soundTypeNames": [".wav files", "reserved"], "soundTypeIndex": 0,
    "mainParameterNames": ["sound files", "reserved"], "mainParameterIndex": 0, "sesNum": 3, "nTimes": 1, "si": 1,
    "threshold": 0, "reactionTime": 0, "saveData": True, "feedBack": True, "autoPlay": True,
}
PRESENTATION = {"firstTaken": 0.5, "lastTaken": 213.25, "tokenEnd": 256, "clockStart": 256.75, "block": 42.5,
                "serverDelay": 0.25, "longestBlindness": 1.5}

TOOLS = LANGUAGE = RSCRIPT = None


@dataclass
class Session:
    """The tokens, and of each presentation the token's index, the answer and the reaction time."""
    tokens: list
    trials: list
    n_times: int = 1
    sub_code: str = "CHD001"
    answered: int | None = None  # where the session was broken off; otherwise all
    missing: tuple = ()  # answers whose lines the journal has lost
    file_name: str = "CHD001_experiment003.txt"

    def category(self, token):
        return "mother" if self.sub_code[-3:] in self.tokens[token] else "stranger"

    def answers(self):
        """(number from 0 on, token, answer, reaction time) of what the journal holds."""
        return [(number, *trial) for number, trial in enumerate(self.trials[:self.answered])
                if number not in self.missing]

    def journal(self):
        parameters = dict(PARAMETERS, nTimes=self.n_times, subCode=self.sub_code)
        lines = [{"type": "session", "format": 1, "program": "Ostrine", "version": "0.14.0", "qt": "6.4.2",
                  "output": "out", "started": "2026-11-22T08:01:50.123Z", "parameters": parameters,
                  "tokens": self.tokens, "order": [trial[0] for trial in self.trials]}]
        for number, token, response, rt in self.answers():
            lines.append({"type": "answer", "trial": number + 1, "token": token, "filename": self.tokens[token],
                          "stim": self.category(token), "resp": response,
                          "correctness": self.category(token) == response, "rt": rt, "presentation": PRESENTATION})
        if self.answered is None:
            lines.append({"type": "end", "end": "finished", "parameters": parameters})
        else:
            lines.append({"type": "end", "end": "broken off"})
        return "".join(json.dumps(line, ensure_ascii=False) + "\n" for line in lines)


FOUR = ["MOV001_01.wav", "MOV001_02.wav", "MOV002_01.wav", "MOV002_02.wav"]

# Shown in docs/result-files.md.
EXAMPLE = Session(FOUR, n_times=2, trials=[
    (0, "mother", 612), (2, "stranger", 834), (3, "mother", 1205), (1, "mother", 540),
    (2, "stranger", 701), (0, "stranger", 1490), (1, "mother", 488), (3, "stranger", 655)])

SESSIONS = {
    "the example": EXAMPLE,
    "every token once": Session(FOUR, [(3, "stranger", 700), (0, "stranger", 900), (2, "mother", 650),
                                       (1, "mother", 423)]),
    "a single answer": Session(["a001.wav"], [(0, "mother", 1)]),
    "all correct": Session(FOUR, [(0, "mother", 3), (1, "mother", 5), (2, "stranger", 8), (3, "stranger", 13)]),
    "all incorrect": Session(FOUR, [(0, "stranger", 3), (1, "stranger", 5), (2, "mother", 8), (3, "mother", 13)]),
    "mother's tokens only": Session(FOUR[:2], [(0, "mother", 310), (1, "stranger", 290)]),
    "stranger's tokens only": Session(FOUR[2:], [(0, "mother", 310), (1, "stranger", 290)]),
    "long reaction times": Session(FOUR, [(0, "mother", 1234567), (1, "mother", 999999), (2, "stranger", 0),
                                          (3, "stranger", 4000000)]),
    "unusual names": Session(['"quoted 001.wav', "#001 it's.wav", " NA: 1,5.wav", "Mädchen \\n .wav"],
                             [(0, "mother", 512), (1, "mother", 640), (2, "mother", 128), (3, "stranger", 256)]),
    "an unusual subject code": Session(["x.wav", "y: 1.wav"], [(0, "stranger", 512), (1, "mother", 640)],
                                       sub_code="Ünal: 1"),
    "an empty subject code": Session(["x.wav", "y.wav"], [(0, "stranger", 512), (1, "mother", 640)], sub_code=""),
    "broken off": Session(FOUR, [(1, "mother", 700), (2, "mother", 900), (3, "stranger", 650), (0, "mother", 423)],
                          answered=3),
    "broken off before the first answer": Session(FOUR, [(0, "mother", 1), (1, "mother", 1), (2, "mother", 1),
                                                         (3, "mother", 1)], answered=0),
    "an answer lost": Session(FOUR, [(0, "mother", 700), (2, "mother", 900), (3, "stranger", 650),
                                     (1, "mother", 423)], answered=4, missing=(1,)),
    "a name without suffix": Session(FOUR[:1] + FOUR[2:3], [(0, "mother", 700), (1, "stranger", 900)],
                                     file_name="results"),
    "a name with two dots": Session(FOUR[:1] + FOUR[2:3], [(0, "mother", 700), (1, "stranger", 900)],
                                    file_name="a.b.txt"),
}


def quantile(probability):
    """The standard normal quantile, by bisection."""
    low, high = -10.0, 10.0
    while high - low > 1e-12:
        middle = (low + high) / 2
        if (1 + math.erf(middle / math.sqrt(2))) / 2 < probability:
            low = middle
        else:
            high = middle
    return low


def median(values):
    values = sorted(values)
    count = len(values)
    return (values[(count - 1) // 2] + values[count // 2]) / 2 if values else math.nan


def shown(rt):
    """A reaction time with the six digits that the entries file has."""
    return float(f"{rt:.6g}")


def expected_figures(session):
    figures = {}
    scores = {}
    for category in ("mother", "stranger"):
        own = [(response, shown(rt)) for _, token, response, rt in session.answers()
               if session.category(token) == category]
        correct = [rt for response, rt in own if response == category]
        figures[category] = [float(len(own)), len(correct) / len(own) if own else math.nan,
                             median([rt for _, rt in own]), median(correct)]
        mother = sum(response == "mother" for response, _ in own)
        scores[category] = quantile((mother + 0.5) / (len(own) + 1)) if own else math.nan
    figures["d-prime"] = [scores["mother"] - scores["stranger"]]
    return figures


def figures_in(output):
    """The numbers behind each word that a reader prints."""
    figures = {}
    for line in output.split("\n"):
        word, *fields = line.split("\t")
        if word in ("mother", "stranger", "d-prime"):
            figures[word] = [math.nan if field in ("NA", "NaN", "nan") else float(field) for field in fields]
    return figures


class ReaderCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="ostrine-test.")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def journal_of(self, session):
        path = self.folder / "ostrine" / "sessions" / f"{JOURNAL}.jsonl"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(session.journal(), encoding="utf-8")
        return path

    def files_of(self, session):
        """Has the program write the session's files; returns the records file."""
        self.journal_of(session)
        records = self.folder / session.file_name
        subprocess.run([TOOLS, "sessions", "--restore", JOURNAL, "--to", str(records)], check=True, timeout=30,
                       env=dict(os.environ, XDG_DATA_HOME=str(self.folder)), stdin=subprocess.DEVNULL)
        return records

    def read(self, path):
        """What the reader of sessions prints. It must not complain of anything."""
        if LANGUAGE == "r":
            return self.run_reader("read_session", path)
        # In this process, because to load pandas takes longer than everything else.
        with warnings.catch_warnings(), contextlib.redirect_stdout(io.StringIO()) as output:
            warnings.simplefilter("error")
            self.python_reader().main(path)
        return output.getvalue()

    @staticmethod
    def python_reader():
        with unittest.mock.patch.object(sys, "path", [str(READERS), *sys.path]):
            return importlib.import_module("read_session")

    def run_reader(self, reader, path):
        """The same of any reader, run as its users do."""
        if LANGUAGE == "r":
            return self.run_command(RSCRIPT, str(READERS / f"{reader}.R"), str(path))
        return self.run_command(sys.executable, "-B", str(READERS / f"{reader}.py"), str(path))

    def run_command(self, *command):
        # R escapes letters that the environment's language does not have.
        result = subprocess.run(command, timeout=120, stdin=subprocess.DEVNULL, capture_output=True,
                                encoding="utf-8", env=dict(os.environ, LC_ALL="C.UTF-8"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def assert_figures(self, found, expected):
        self.assertEqual(found.keys(), expected.keys())
        for word, values in expected.items():
            self.assertEqual(len(found[word]), len(values), word)
            for got, wanted in zip(found[word], values):
                both_missing = math.isnan(got) and math.isnan(wanted)
                self.assertTrue(both_missing or math.isclose(got, wanted, rel_tol=1e-9, abs_tol=1e-6),
                                f"{word}: {found[word]}, expected {values}")


class ReaderTest(ReaderCase):
    # Catches a reader that misreads the files of any kind of session, or counts its figures wrongly.
    def test_the_figures_are_those_of_the_answers(self):
        for name, session in SESSIONS.items():
            with self.subTest(name):
                output = self.read(self.files_of(session))
                self.assert_figures(figures_in(output), expected_figures(session))
                lines = output.split("\n")
                self.assertEqual(lines[:3], [f"subject\t{session.sub_code}", "session\t3",
                                             f"tokens\t{len(session.tokens)}"])

    # Catches the same mistake in the readers and in the figures that they are compared with.
    def test_the_figures_of_the_example_are_those_of_textbooks(self):
        # Mother: 3 of 4 correct; 3.5 / 5 = 0.7. Stranger: 3 of 4 correct; 1.5 / 5 = 0.3. z(0.7) = 0.524401.
        self.assert_figures(figures_in(self.run_reader("read_session", self.files_of(EXAMPLE))),
                            {"mother": [4, 0.75, 576, 540], "stranger": [4, 0.75, 767.5, 701],
                             "d-prime": [1.048801]})

    # Catches another encoding, changed names, and a reader that cannot be used by other scripts.
    def test_names_are_read_as_they_are(self):
        session = SESSIONS["unusual names"]
        entries = self.files_of(session).with_name("CHD001_experiment003_entries.txt")
        if LANGUAGE == "r":
            script = ('source(commandArgs(TRUE)[1], encoding = "UTF-8"); '
                      'cat(read_table(commandArgs(TRUE)[2], entry_columns)$filename, sep = "\n")')
            names = self.run_command(RSCRIPT, "-e", script, str(READERS / "read_session.R"), str(entries))
            names = names.rstrip("\n").split("\n")
        else:
            reader = self.python_reader()
            names = list(reader.read_table(entries, reader.ENTRIES)["filename"])
        self.assertEqual(names, [session.tokens[trial[0]] for trial in session.trials])


class DocumentTest(ReaderCase):
    """What is there in one language only. Run with the Python readers."""

    def setUp(self):
        super().setUp()
        self.document = (CHECKOUT / "docs" / "result-files.md").read_text(encoding="utf-8")

    # Catches a document that shows an older reader.
    def test_the_document_shows_the_readers(self):
        for path in sorted(READERS.iterdir()):
            if path.suffix in (".py", ".R"):
                self.assertIn(f"\n{path.read_text(encoding='utf-8')}```\n", self.document, path.name)

    # Catches an example that the program would not write, and one that the readers would print otherwise.
    def test_the_document_shows_the_files_of_the_example(self):
        records = self.files_of(EXAMPLE)
        texts = [path.read_text(encoding="utf-8") for path in
                 (records, records.with_name("CHD001_experiment003_entries.txt"))]
        for text in [*texts, self.read(records)]:
            block = "".join(f"    {line}\n" if line else "\n" for line in text.rstrip("\n").split("\n"))
            self.assertIn(block, self.document)

    # Catches a document that lists other columns or parameters than the files have, or in another order.
    def test_the_document_names_every_column_and_parameter_in_order(self):
        records = self.files_of(EXAMPLE)
        base = records.stem
        names = []
        for path in (records, records.with_name(f"{base}_entries.txt")):
            names += path.read_text(encoding="utf-8").split("\n")[0].split("\t")
        parameters = records.with_name(f"{base}_parameters.txt").read_text(encoding="utf-8")
        names += [line.split(":")[0] for line in parameters.split("\n")]
        rows = [line.split("|")[1].strip().strip("`") for line in self.document.split("\n")
                if line.startswith("| `") and "`" in line]
        self.assertEqual(rows[:len(names)], names)

    # Catches a reader of journals that loses answers, timing, or the head, or that fails on a cut journal.
    def test_the_reader_of_journals_prints_each_answer(self):
        journal = self.journal_of(EXAMPLE)
        with open(journal, "a", encoding="utf-8") as file:
            file.write('{"type":"answer","tri')
        head, table = self.run_reader("read_journal", journal).split("\n\n")
        self.assertEqual(head, "subject\tCHD001\nstarted\t2026-11-22T08:01:50.123Z")
        columns, *rows = [line.split("\t") for line in table.rstrip("\n").split("\n")]
        found = [dict(zip(columns, row)) for row in rows]
        self.assertEqual(len(found), len(EXAMPLE.trials))
        for row, (number, token, response, rt) in zip(found, EXAMPLE.answers()):
            self.assertEqual((int(row["trial"]), int(row["token"]), row["filename"], row["resp"], float(row["rt"]),
                              float(row["presentation.clockStart"])),
                             (number + 1, token, FOUR[token], response, rt, 256.75))


def main():
    global LANGUAGE, TOOLS, RSCRIPT
    LANGUAGE, TOOLS, RSCRIPT = [*sys.argv[1:], None][:3]
    loader = unittest.TestLoader()
    if LANGUAGE == "r" and not RSCRIPT:
        sys.exit(77)  # skipped
    cases = [ReaderTest, DocumentTest] if LANGUAGE == "python" else [ReaderTest]
    tests = map(loader.loadTestsFromTestCase, cases)
    result = unittest.TextTestRunner(verbosity=2).run(unittest.TestSuite(tests))
    sys.exit(not result.wasSuccessful())


if __name__ == "__main__":
    main()
