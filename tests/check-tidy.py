#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails when clang-tidy 14 finds something in src; other versions find other things. Ends with 77, for "not checked",
where a distribution does not have that version.

    check-tidy.py BUILD-FOLDER     where compile_commands.json tells how each file is compiled

Each check looks through all of Qt's headers, for every file that it is given. So the sources are first analysed twelve at
a time, put one behind the other in one file. Only where something is found is each of the twelve analysed by itself, to
tell where it is.
"""

import concurrent.futures
import itertools
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

SOURCES_AT_A_TIME = 12
# The one that is linked with every library, and so is compiled with the include folders of all.
FULLEST = "src/tools/main.cpp"

root = pathlib.Path(__file__).resolve().parent.parent
tidy = ["clang-tidy-14", "--quiet", f"--config-file={root}/.clang-tidy"]


def flags(build_folder):
    """The options of the compiler's command line that say what a source means."""
    entries = json.loads((build_folder / "compile_commands.json").read_text())
    [command] = [entry["command"] for entry in entries if entry["file"] == str(root / FULLEST)]
    words = shlex.split(command)
    kept = []
    for word, following in itertools.pairwise(words):
        if word.startswith(("-D", "-I", "-std=")):
            kept.append(word)
        elif word == "-isystem":
            kept += [word, following]
    return kept


def findings(file, flags):
    run = subprocess.run([*tidy, str(file), "--", *flags], capture_output=True, text=True)
    return run.stdout + run.stderr if run.returncode else ""


def main():
    if not shutil.which(tidy[0]):
        print("src is not analysed: clang-tidy-14 is not installed.")
        return 77
    options = flags(pathlib.Path(sys.argv[1]))
    sources = sorted((root / "src").glob("**/*.cpp"))
    if not sources:
        sys.exit("There are no sources to analyse.")

    batches = [sources[first : first + SOURCES_AT_A_TIME] for first in range(0, len(sources), SOURCES_AT_A_TIME)]
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:

        def analyse(file):
            return findings(file, options)

        def analyse_together(batch):
            file = pathlib.Path(folder) / batch[0].name
            file.write_text("".join(source.read_text() for source in batch))
            return analyse(file)

        found = list(pool.map(analyse_together, batches))
        for batch, text in zip(batches, found):
            if text:
                alone = "".join(pool.map(analyse, batch))
                # Some things are wrong only together, such as a name that two sources give to different things.
                print(alone or text)
    return 1 if any(found) else 0


sys.exit(main())
