#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The answers in the journal of a session, with how accurately each presentation was timed.

    python3 read_journal.py 20261122-080150-123.jsonl
"""

import json
import sys
from pathlib import Path

import pandas as pd


def read_journal(path):
    """The head as a dictionary, and a row for each answer."""
    # What follows the last line break is empty, or a line that was cut off.
    lines = [json.loads(line) for line in path.read_text(encoding="utf-8").split("\n")[:-1]]
    answers = pd.json_normalize([line for line in lines if line["type"] == "answer"])
    return lines[0], answers


if __name__ == "__main__":
    session, table = read_journal(Path(sys.argv[1]))
    print(f"subject\t{session['parameters']['subCode']}\nstarted\t{session['started']}\n")
    print(table.to_csv(sep="\t", index=False), end="")
