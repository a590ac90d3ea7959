# SPDX-License-Identifier: GPL-3.0-or-later
"""One whole practice session with the example tokens, as operator and subject would do it.

Leaves the result files and pictures of the screen in demo-session/ at the top of the checkout.
Runs inside scripts/private-session.sh --audio --display:

    scripts/private-session.sh --audio --display /usr/bin/python3 tests/e2e/demo_session.py PROGRAM
"""

import shutil
import sys
import time
from pathlib import Path

import ostrine_driver as driver

OUTPUT = driver.CHECKOUT / "demo-session"
# Seconds: long enough for taking a picture meanwhile.
REACTION_TIME = 0.8


def main(program):
    driver.start_watchdog(300)
    shutil.rmtree(OUTPUT, ignore_errors=True)
    OUTPUT.mkdir()
    pictures = []

    def picture(name):
        path = OUTPUT / f"{len(pictures) + 1:02d}-{name}.png"
        driver.screenshot(path)
        pictures.append(path)

    count = len(driver.token_names(driver.TOKEN_FOLDER))
    with driver.Ostrine(program, OUTPUT / "program.log") as ostrine:
        driver.settled_box(ostrine.main)
        picture("start")
        ostrine.prepare("Practice", driver.TOKEN_FOLDER)
        picture("prepared")
        subject = ostrine.go()
        driver.settled_box(subject.window)
        picture("subject-waits")
        subject.ready()
        picture("listening")

        pictured = set()
        for number in range(count):
            # One wrong answer now and then, so that both pictures are seen.
            wrong = number % 3 == 1

            def choose(token):
                right = driver.category(token)
                return driver.other(right) if wrong else right

            delay = REACTION_TIME
            if number == 0:
                _, enabled_by = subject.await_answering()
                picture("answering")
                delay -= time.monotonic() - enabled_by
            trial = subject.answer(choose, delay)
            print(f"{trial.status}: {trial.token} -> {trial.response}", flush=True)
            if wrong not in pictured and number + 1 < count:
                pictured.add(wrong)
                picture("answered-wrong" if wrong else "answered-right")

        _, field = ostrine.save_dialog()
        picture("save")
        print(f"proposed name: {driver.text_of(field)}")
        records = OUTPUT / "CHD001_practice001.txt"
        ostrine.save_as(records)
        subject.button("Done")
        driver.bring_forward(driver.SUBJECT_WINDOW)
        picture("finished")
        subject.request_close()
        picture("confirm")
        subject.confirm()
        driver.wait_for(lambda: driver.is_enabled(ostrine.main_button("Experiment")),
                        "'Experiment' to be enabled")
        picture("afterwards")
        code = ostrine.quit()
        if code != 0:
            raise driver.DriverError(f"the program ended with {code}:\n{ostrine.log()}")

    print("\nPictures:")
    for path in pictures:
        print(f"  {path.relative_to(driver.CHECKOUT)}")
    print("\nResult files:")
    for suffix in ("", "_entries", "_parameters"):
        path = records.with_name(f"{records.stem}{suffix}.txt")
        if not path.is_file():
            raise driver.DriverError(f"{path} was not written")
        print(f"  {path.relative_to(driver.CHECKOUT)}")
    print(f"\n{records.name}:\n{records.read_text()}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(Path(sys.argv[1]).resolve())
