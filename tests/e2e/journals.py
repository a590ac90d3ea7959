# SPDX-License-Identifier: GPL-3.0-or-later
"""What the journal of a session must hold, and the result files that must come of it.

Reads journals by their format, with nothing of the program's own reader or writer.
"""

import json
import os
import subprocess
from dataclasses import dataclass
from pathlib import Path

from ostrine_driver import category

# An answer is safe when it was given so many seconds ago, whatever happens then.
SAFE_AFTER = 1.0

DOUBLES = {"fs", "upperFrequencyToPlot", "si", "threshold", "reactionTime"}
PARAMETERS = {
    "fs": 48000, "alwaysPlotEntireWaveformFlag": 1, "upperFrequencyToPlot": 2000,
    "outputFilePath": None, "wavFilePath": None, "subCode": "CHD001", "outputFileName": None,
    "outputFileName_entries": None, "outputFileName_parameters": None,
    "sesTypeNames": ["practice", "experiment"], "sesTypeIndex": 0,
    "soundTypeNames": [".wav files", "reserved"], "soundTypeIndex": 0,
    "mainParameterNames": ["sound files", "reserved"], "mainParameterIndex": 0,
    "sesNum": 1, "nTimes": 1, "si": 1, "threshold": 0, "reactionTime": 0,
    "saveData": True, "feedBack": True, "autoPlay": True,
}


@dataclass
class Press:
    """An answer as whoever gave it knows it."""
    trial: int  # from 1 on
    token: str
    response: str
    # Clock time by which the press had been given to the display.
    given: float
    # Limits of the reaction time in ms; None where the program ended before it took the answer.
    least: float | None = None
    most: float | None = None


def lines_of(content):
    """The lines of a journal as objects, without one at its end that is torn."""
    whole, _, _ = content.rpartition(b"\n")
    return [json.loads(line) for line in whole.split(b"\n")] if whole else []


def answers_of(lines):
    return [line for line in lines if line["type"] == "answer"]


def require(condition, complaint):
    if not condition:
        raise AssertionError(complaint)


def check_head(lines, tokens, **parameters):
    """The first line must tell of a session with these tokens, in the program's order."""
    require(lines, "the journal is empty")
    head = lines[0]
    about = {key: head[key] for key in ("type", "format", "program", "tokens")}
    require(about == {"type": "session", "format": 1, "program": "Ostrine", "tokens": tokens},
            f"the journal begins with {head}")
    expected = dict(PARAMETERS, **parameters)
    require(head["parameters"].keys() == expected.keys(), f"parameters: {list(head['parameters'])}")
    for key, value in expected.items():
        require(value is None or head["parameters"][key] == value,
                f"{key} is {head['parameters'][key]!r}, expected {value!r}")
    require(sorted(head["order"]) == sorted(list(range(len(tokens))) * expected["nTimes"]),
            f"the order is {head['order']}")


def check_answers(lines, presses, end=None):
    """The answers must be those given, in their order, and none safe at the time `end` may be missing.

    Without an end all of them must be there. Returns how many were kept.
    """
    kept = answers_of(lines)
    for press in presses[len(kept):]:
        age = None if end is None else end - press.given
        require(age is not None and age < SAFE_AFTER,
                f"answer {press.trial} is lost" + (f", given {age:.3f} s before the end" if age else "")
                + f"; the journal holds {len(kept)} of {len(presses)}")
    require(len(kept) <= len(presses), f"the journal holds {len(kept)} answers of {len(presses)}")
    head = lines[0] if lines else None
    for press, line in zip(presses, kept):
        stimulus = category(press.token)
        token = head["order"][press.trial - 1]
        expected = {"type": "answer", "trial": press.trial, "token": token, "filename": press.token,
                    "stim": stimulus, "resp": press.response, "correctness": stimulus == press.response}
        found = {key: line[key] for key in expected}
        require(found == expected and head["tokens"][token] == press.token,
                f"the journal says {found} of the answer {expected}")
        require(press.least is None or press.least <= line["rt"] <= press.most,
                f"answer {press.trial} took {line['rt']} ms, expected {press.least} to {press.most} ms")
    return len(kept)


def number_text(value):
    """A number as the result files show it."""
    return f"{value:.6g}"


def result_texts(lines, records_path):
    """The texts of the three files that a session with this journal must give, by their paths.

    A session that has not finished has entries for the answers given and no others.
    """
    head = lines[0]
    answers = answers_of(lines)
    finished = [line for line in lines if line["type"] == "end" and line["end"] == "finished"]
    records_path = Path(records_path)
    paths = [records_path] + [records_path.with_name(f"{records_path.stem}_{topic}{records_path.suffix}")
                              for topic in ("entries", "parameters")]

    records = "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n"
    for index, name in enumerate(head["tokens"]):
        own = [answer for answer in answers if answer["token"] == index]

        def mean(times):
            return number_text(sum(times) / len(times)) if times else "0"

        records += "\t".join([
            name,
            str(sum(answer["resp"] == "mother" for answer in own)),
            str(sum(answer["resp"] == "stranger" for answer in own)),
            mean([answer["rt"] for answer in own]),
            mean([answer["rt"] for answer in own if answer["correctness"]]),
            mean([answer["rt"] for answer in own if not answer["correctness"]])])
        # The line break depends on the number of presentations, not on that of the tokens.
        if index < len(head["order"]) - 1:
            records += "\n"

    entries = "\n".join(["filename\tstim\tresp\tcorrectness\trt"] + [
        "\t".join([answer["filename"], answer["stim"], answer["resp"], str(int(answer["correctness"])),
                   number_text(answer["rt"])])
        for answer in answers]) if answers else ""

    values = dict(finished[0]["parameters"] if finished else head["parameters"])
    values.update(outputFilePath=str(paths[0]), outputFileName=paths[0].name,
                  outputFileName_entries=paths[1].name, outputFileName_parameters=paths[2].name)

    def value_text(key):
        value = values[key]
        if isinstance(value, list):
            return ", ".join(value)
        if isinstance(value, bool):
            return str(int(value))
        return number_text(value) if key in DOUBLES else str(value)

    parameters = "\n".join(f"{key}: {value_text(key)}" for key in PARAMETERS)
    return dict(zip(paths, [records, entries, parameters]))


def check_restored(tools, data_home, journal, folder):
    """The files that the program's own tool restores from a journal must be those that it has to give."""
    folder = Path(folder)
    folder.mkdir(parents=True)
    expected = result_texts(lines_of(journal.read_bytes()), folder / "restored.txt")
    restored = subprocess.run(
        [str(tools), "sessions", "--restore", journal.stem, "--to", str(folder / "restored.txt")],
        env=dict(os.environ, XDG_DATA_HOME=str(data_home)), stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=30)
    require(restored.returncode == 0, f"'sessions --restore' says {restored.stdout!r}")
    found = {path: path.read_bytes().decode() for path in sorted(folder.iterdir())}
    require(found == expected, f"restored {found}, expected {expected}")
