#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Accuracy, reaction times and d-prime of one session, from its result files.

    python3 read_session.py CHD001_experiment001.txt
"""

import csv
import sys
from pathlib import Path
from statistics import NormalDist

import pandas as pd

RECORDS = {"filename": str, "nMother": int, "nStranger": int,
           "rt": float, "rt_correct": float, "rt_incorrect": float}
ENTRIES = {"filename": str, "stim": str, "resp": str, "correctness": int, "rt": float}


def companion(records_path, topic):
    """The path of the entries or parameters file that belongs to a records file."""
    name = records_path.name
    base, _, suffix = name.rpartition(".") if "." in name else (name, "", "")
    return records_path.with_name(f"{base}_{topic}.{suffix}")


def read_table(path, columns):
    """The records or the entries; without any the file is empty and has no header."""
    if path.stat().st_size == 0:
        return pd.DataFrame(columns=list(columns)).astype(columns)
    return pd.read_csv(path, sep="\t", encoding="utf-8", quoting=csv.QUOTE_NONE, lineterminator="\n",
                       dtype=columns)


def read_parameters(path):
    """The parameters as texts, by name."""
    return dict(line.split(": ", 1) for line in path.read_text(encoding="utf-8").split("\n"))


def by_category(entries):
    """Number of answers, proportion correct and median reaction times in ms, by category of the token."""
    correct = entries[entries["correctness"] == 1]
    return pd.DataFrame({
        "answers": entries.groupby("stim").size(),
        "accuracy": entries.groupby("stim")["correctness"].mean(),
        "median_rt": entries.groupby("stim")["rt"].median(),
        "median_rt_correct": correct.groupby("stim")["rt"].median(),
    }).reindex(pd.Index(["mother", "stranger"], name="category")).fillna({"answers": 0}).astype({"answers": int})


def d_prime(entries):
    """Sensitivity with the log-linear correction: (hits + 0.5) / (mother's tokens + 1), false alarms likewise."""
    def z_of_mother_answers(category):
        responses = entries.loc[entries["stim"] == category, "resp"]
        if responses.empty:
            return float("nan")
        return NormalDist().inv_cdf(((responses == "mother").sum() + 0.5) / (len(responses) + 1))

    return z_of_mother_answers("mother") - z_of_mother_answers("stranger")


def main(records_path):
    records = read_table(records_path, RECORDS)
    entries = read_table(companion(records_path, "entries"), ENTRIES)
    parameters = read_parameters(companion(records_path, "parameters"))
    print(f"subject\t{parameters['subCode']}\nsession\t{parameters['sesNum']}\ntokens\t{len(records)}\n")
    print(by_category(entries).to_csv(sep="\t", na_rep="nan"))
    print(f"d-prime\t{d_prime(entries):.6f}")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
