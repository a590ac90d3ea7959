# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the timing by the companion, on a sound server of which it is known what the result must be.

    scripts/private-session.sh --audio /usr/bin/python3 tests/e2e/test_timing.py TOOLS
"""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

TOOLS = None

# A virtual microphone that hears the output "out" so many samples later.
MICROPHONE = """
context.spa-libs = {{
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}}
context.modules = [
    {{ name = libpipewire-module-protocol-native }}
    {{ name = libpipewire-module-client-node }}
    {{ name = libpipewire-module-adapter }}
    {{ name = libpipewire-module-filter-chain
       args = {{
           audio.rate = 48000
           audio.channels = 1
           audio.position = [ MONO ]
           filter.graph = {{ nodes = [
               {{ type = builtin name = delay label = convolver
                  config = {{ filename = "/dirac" delay = {delay} gain = -0.1 }} }}
           ] }}
           capture.props = {{ node.name = "{name}.in" stream.capture.sink = true target.object = "out" }}
           playback.props = {{ node.name = "{name}" node.description = "{name}" media.class = "Audio/Source" }}
       }} }}
]
"""


def timing(*arguments, **variables):
    return subprocess.run([TOOLS, "timing", *arguments], capture_output=True, text=True, timeout=120,
                          env=dict(os.environ, **variables))


def measured(*arguments):
    """What the companion has measured. Its exit status must be that of its verdict."""
    result = timing("--json", *arguments)
    report = json.loads(result.stdout) if result.returncode in (0, 1) else None
    if report is None or result.returncode != (0 if report["isGood"] else 1):
        raise AssertionError(f"status {result.returncode}: {result.stderr} {result.stdout}")
    return report


def wait_for(condition, what):
    deadline = time.monotonic() + 15
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(what)
        time.sleep(0.05)


def sources():
    return subprocess.run(["pactl", "list", "short", "sources"], capture_output=True, text=True,
                          check=True).stdout.split()


def recorders():
    """The processes that record for a companion of this test."""
    found = []
    for folder in Path("/proc").iterdir():
        try:
            command = (folder / "cmdline").read_bytes().split(b"\0")
            session = os.getsid(int(folder.name))
        except (OSError, ValueError):
            continue
        if b"--record-stamped" in command and session == os.getsid(0):
            found.append(folder.name)
    return found


class Timing(unittest.TestCase):
    def test_a_known_delay_is_found_with_an_input(self):
        """Catches a microphone's sound that is not found, or that is timed 2 ms or more from where it is."""
        with tempfile.TemporaryDirectory() as folder:
            servers = []
            try:
                for name, delay in (("near", 0), ("far", 4800)):
                    path = Path(folder) / f"{name}.conf"
                    path.write_text(MICROPHONE.format(name=name, delay=delay), encoding="utf-8")
                    servers.append(subprocess.Popen(["pipewire", "-c", path], stderr=subprocess.DEVNULL))
                    wait_for(lambda n=name: n in sources(), f"there is no microphone {name}")
                errors = {}
                for name in ("near", "far"):
                    report = measured("--plays", "4", "--input", name)
                    self.assertFalse(report["foundSampleBySample"])
                    self.assertEqual(report["all"]["wholePlays"], 12, report)
                    self.assertIn(name, report["input"])
                    errors[name] = report["all"]["clockZeroError"]
            finally:
                for server in servers:
                    server.kill()
                    server.wait()
        # A program that is held up starts its clock late, which the smallest error does not show.
        self.assertAlmostEqual(errors["near"]["min"] - errors["far"]["min"], 100, delta=2, msg=errors)
        self.assertAlmostEqual(errors["near"]["mean"] - errors["far"]["mean"], 100, delta=6, msg=errors)
        self.assertAlmostEqual(errors["near"]["min"], 1.5, delta=3, msg=errors)

    def test_the_output_is_measured_sample_by_sample(self):
        """Catches tokens that are lost or counted wrongly, and errors of another order than they are."""
        report = measured("--plays", "3")
        self.assertTrue(report["foundSampleBySample"])
        self.assertEqual([token["samples"] for token in report["tokens"]], [2400, 12062, 48000])
        self.assertEqual([token["plays"] for token in report["tokens"]], [3, 3, 3])
        self.assertEqual(report["all"]["plays"], 9)
        self.assertEqual(report["all"]["wholePlays"], 9, report)
        self.assertAlmostEqual(report["all"]["clockZeroError"]["min"], 1.5, delta=3, msg=report)
        self.assertGreaterEqual(report["all"]["presentationTimerError"]["min"], 0)
        self.assertEqual(sum(each["count"] for each in report["clockZeroErrorHistogram"]), 9)
        self.assertEqual(report["soundServerPeriod"], "2048 samples (42.7 ms)")
        self.assertIn("PipeWire", report["soundServer"])
        self.assertIn("over 9 presentations", report["paper"])

    def test_an_output_that_changes_the_samples_is_measured_all_the_same(self):
        """Catches a volume or a number of channels with which nothing is found."""
        subprocess.run(["pactl", "set-sink-volume", "out", "50%"], check=True)
        try:
            report = measured("--plays", "1")
        finally:
            subprocess.run(["pactl", "set-sink-volume", "out", "100%"], check=True)
        self.assertFalse(report["foundSampleBySample"])
        self.assertEqual(report["all"]["wholePlays"], 3, report)
        self.assertAlmostEqual(report["all"]["clockZeroError"]["min"], 1.5, delta=3, msg=report)

    def test_an_input_that_hears_nothing_is_a_finding(self):
        """Catches noise found in silence, and a verdict that is good without a sound."""
        subprocess.run(["pactl", "load-module", "module-null-sink", "sink_name=silent"], check=True,
                       stdout=subprocess.DEVNULL)
        wait_for(lambda: "silent.monitor" in sources(), "there is no second output")
        report = measured("--plays", "1", "--input", "silent.monitor")
        self.assertFalse(report["isGood"])
        self.assertIn("No token was heard", report["verdict"])
        self.assertEqual(report["all"]["clockZeroError"]["count"], 0)
        self.assertEqual(report["paper"], "")

    def test_what_cannot_be_measured_is_said(self):
        """Catches a crash, a hang or a silent end without a server or an input, and wrong options."""
        for arguments, variables, reason in (
                (("--input", "nowhere"), {}, "There is no input nowhere. There are: "),
                ((), {"PULSE_SERVER": "unix:/nonexistent"}, "There is no sound server"),
                (("--plays", "0"), {}, "The number of plays must be 1 to 1000"),
                (("--plays", "1001"), {}, "The number of plays must be 1 to 1000"),
                (("--plays", "many"), {}, "The number of plays must be 1 to 1000"),
                (("--input", ""), {}, "The name of the input is empty")):
            with self.subTest(reason):
                result = timing(*arguments, **variables)
                self.assertEqual(result.returncode, 2, result)
                self.assertIn(reason, result.stderr)
                self.assertEqual(result.stdout, "")

    def test_it_can_be_stopped_and_leaves_no_recorder(self):
        """Catches a measurement that goes on after Ctrl-C, and a recorder that outlives the companion."""
        for number, status in ((signal.SIGINT, 2), (signal.SIGKILL, -signal.SIGKILL)):
            with self.subTest(number):
                process = subprocess.Popen([TOOLS, "timing"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                           text=True)
                try:
                    wait_for(recorders, "nothing is recorded")
                    time.sleep(2)
                    process.send_signal(number)
                    output, errors = process.communicate(timeout=15)
                finally:
                    process.kill()
                self.assertEqual(process.returncode, status, errors)
                self.assertEqual(output, "")
                if number == signal.SIGINT:
                    self.assertIn("Stopped before the end", errors)
                wait_for(lambda: not recorders(), "the recorder is still running")


if __name__ == "__main__":
    TOOLS = sys.argv.pop(1)
    unittest.main(verbosity=2)
