#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Writes the inputs that the fuzz targets begin with into corpus/. Inputs found by the fuzzer (found-*) stay. A
# target's source tells what its bytes mean.
import json
import struct
from pathlib import Path

here = Path(__file__).parent
tokens = here.parent.parent / "examples" / "tokens"


def write(target, inputs):
    folder = here / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("seed-*"):
        old.unlink()
    for name, content in inputs.items():
        (folder / f"seed-{name}").write_bytes(content)


# --- The reader: a byte for each step, then what the step takes.
SILENCE = bytes([3, 5])
NO_FILE, FOLDER = bytes([4, 0]), bytes([4, 1])
CONVERT, WRITE = bytes([5]), bytes([6])


def orderly(bits, data, channels=1, rate=None, undeclared=0, long=False):
    """A file whose header is made by the target."""
    rate_bytes = b"\1" if rate is None else b"\0" + struct.pack("<I", rate)
    return (bytes([0, bits // 8 - 1, channels]) + rate_bytes +
            struct.pack("<bBB", undeclared, 255 if long else 0, len(data)) + data + SILENCE)


def header(bits=16, channels=1, rate=48000, size=0, magic=b"WAVE", audio_format=1):
    frame = channels * bits // 8
    return struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + min(size, 2**31), magic, b"fmt ", 16, audio_format, channels,
                       rate, rate * frame % 2**32, frame, bits, b"data", size)


def file(content):
    """A file of just these bytes."""
    return struct.pack("<BH", 3, len(content)) + content + SILENCE


def delay(points, rate, interval):
    return struct.pack("<BIIB", 7, 2 * points, rate, interval)


EDGES_24 = bytes.fromhex("000080 010080 ffffff ffff7f 000000 000040 0000c0")
EDGES_16 = struct.pack("<6h", -32768, 32767, 0, 1, -1, 256)
EDGES_8 = bytes([0, 128, 255, 127, 129])


def example(name, length, declared=None):
    """The first bytes of an example token, with a header that declares them or another number."""
    content = (tokens / name).read_bytes()[:44 + length]
    return content[:40] + struct.pack("<I", length if declared is None else declared) + content[44:]


reader = {
    "edges": orderly(8, EDGES_8) + orderly(16, EDGES_16) + orderly(24, EDGES_24),
    "stereo": orderly(16, EDGES_16, channels=2) + orderly(24, EDGES_24, channels=2) + orderly(8, EDGES_8, channels=2),
    "three-channels": orderly(16, EDGES_16) + orderly(16, EDGES_16, channels=3) + orderly(8, EDGES_8, channels=1),
    "no-channel-no-rate": orderly(16, EDGES_16, channels=0) + orderly(16, EDGES_16, rate=0) + orderly(8, b"", rate=7),
    "an-hour-and-more": orderly(8, bytes(180), rate=2, long=True) + orderly(8, bytes(181), rate=2, long=True)
        + orderly(16, EDGES_16),
    "fragments": b"".join(orderly(24, EDGES_24[:n]) for n in (1, 2, 3, 4, 5)) + orderly(16, EDGES_16[:3]),
    "truncated": orderly(16, EDGES_16) + orderly(16, EDGES_16, undeclared=-1) + orderly(24, EDGES_24, undeclared=-3)
        + CONVERT + WRITE,
    "bytes-behind": orderly(8, EDGES_8, undeclared=2) + orderly(24, EDGES_24, undeclared=1) + WRITE,
    "long-then-short": orderly(24, EDGES_24 * 9, long=True) + orderly(8, EDGES_8) + orderly(16, EDGES_16 * 20, long=True)
        + orderly(16, EDGES_16),
    "four-bytes-refused": orderly(16, EDGES_16) + orderly(32, EDGES_16) + CONVERT + WRITE,
    "no-file": NO_FILE + orderly(8, EDGES_8) + NO_FILE + FOLDER + CONVERT + WRITE + file(b""),
    # The counts of an earlier file under a refused header with the same number of bytes
    "count-of-8-bits-for-16": orderly(8, b"12345678") + file(header(16, audio_format=3, size=8) + b"12345678") + CONVERT,
    "count-of-8-bits-for-24": orderly(8, b"12345678") + file(header(24, audio_format=3, size=8) + b"12345678") + CONVERT,
    "count-of-16-bits-for-8": orderly(16, b"12345678") + file(header(8, audio_format=3, size=8) + b"12345678") + CONVERT,
    "larger-refused": orderly(16, EDGES_16) + file(header(16, magic=b"AVI ", size=4000)) + CONVERT + WRITE,
    "smaller-refused": orderly(16, EDGES_16) + file(header(16, magic=b"AVI ", size=4)) + WRITE + CONVERT,
    "huge-declared": file(header(8, size=2**32 - 1) + b"12") + file(header(16, size=2**31) + b"12")
        + file(header(24, size=2**32 - 1)),
    "other-magics": orderly(16, EDGES_16)
        + b"".join(file(header(magic=magic, size=8) + b"12345678") for magic in (b"WAVF", b"wave", b"XAVE", b"WAVE")),
    "no-data": orderly(16, EDGES_16) + file(header(24)) + CONVERT + WRITE,
    "short-headers": orderly(16, EDGES_16) + file(header()[:43]) + file(header()[:35]) + file(header()[:12]) + file(b"R")
        + CONVERT,
    "example-tokens": file(example("MOV001_01.wav", 300)) + file(example("MOV002_03.wav", 120))
        + file(example("MOV001_04.wav", 200, 60168)) + file(example("MOV002_02.wav", 60)),
    "delays": delay(12000, 48000, 100) + delay(1, 1, 0) + delay(2147483, 1, 100) + delay(12001, 48000, 150),
}
write("reader", reader)


# --- The tables: flags, counts, texts and numbers in the order in which the target takes them.
def text(value):
    content = value.encode()
    return bytes([1, len(content)]) + content


def any_text(units):
    """Of UTF-16 that need not be valid."""
    return bytes([0, len(units)]) + struct.pack(f"<{len(units)}H", *units)


def plain(value):
    return b"\1" + struct.pack("<i", round(value * 1000))


def real(value):
    return b"\0" + struct.pack("<d", value)


def record(name, mother, stranger, rt, correct, incorrect):
    return name + text("mother") + struct.pack("<ii", mother, stranger) + rt + correct + incorrect


def entry(name, stim, resp, correct, rt):
    return name + text(stim) + text(resp) + bytes([correct]) + rt


def tables(tame, records, n_entries, entries, reals, integers, texts, lists, flags, path, topic="entries"):
    return (bytes([tame, len(records)]) + b"".join(records) + bytes([n_entries, len(entries)]) + b"".join(entries)
            + b"".join(reals) + struct.pack("<6i", *integers) + b"".join(texts)
            + b"".join(bytes([len(items)]) + b"".join(items) for items in lists) + bytes(flags) + text(path)
            + text(topic))


NUMBERS = [plain(48000), plain(2000), plain(1), plain(0), plain(0)]
TEXTS = [text(t) for t in ("/results/CHD001_practice001.txt", "/tokens", "CHD001", "r.txt", "r_entries.txt",
                           "r_parameters.txt")]
LISTS = [[text("practice"), text("experiment")], [text(".wav files"), text("reserved")],
         [text("sound files"), text("reserved")]]
A, B = text("MOV001_01.wav"), text("MOV002_01.wav")
RECORDS = [record(A, 3, 1, plain(800.25), plain(700), plain(1100)), record(B, 0, 4, plain(512.25), plain(512.25), plain(0))]
ENTRIES = [entry(A, "mother", "mother", 1, plain(512)), entry(B, "stranger", "mother", 0, plain(1234.567))]
ODD = [real(float("inf")), real(float("-inf")), real(float("nan")), real(-0.0), real(5e-324)]

write("tables", {
    "once": tables(1, RECORDS, 2, ENTRIES, NUMBERS, (1, 0, 0, 0, 1, 1), TEXTS, LISTS, (1, 1, 1), "/r/CHD001_practice001.txt"),
    "twice": tables(1, RECORDS, 4, ENTRIES * 2, NUMBERS, (1, 1, 1, 1, 12, 2), TEXTS, LISTS, (0, 1, 0), "a.b.txt"),
    "nothing": tables(1, [], 0, [], NUMBERS, (1, 0, 0, 0, 1, 0), TEXTS, LISTS, (1, 0, 1), ""),
    "fewer-entries": tables(1, RECORDS, 1, ENTRIES[:1], NUMBERS, (1, 0, 0, 0, 1234, 1), TEXTS, LISTS, (1, 1, 1), "/r.d/results"),
    "odd-numbers": tables(1, [record(A, -1, 2**31 - 1, real(1e300), real(999999.5), real(1e-5))], 1,
                          [entry(A, "", "", 0, real(2 / 3))], ODD, (-1, -2**31, 2**31 - 1, 5, -1, 7), TEXTS, LISTS,
                          (0, 0, 0), "no.suffix."),
    "other-names": tables(1, [record(text("Mütter \"1\", a;b €.wav"), 1, 0, plain(1), plain(1), plain(0)),
                              record(any_text([0xD83D, 0xDE00, 0x78]), 1, 0, plain(1), plain(1), plain(0))], 2,
                          [entry(any_text([0xD800]), "mother", "mother", 1, plain(1))], NUMBERS, (1, 0, 0, 0, 1, 1),
                          [text("\ufeff")] + TEXTS[1:], [[], [text("a")], [text(","), text(""), text(" ")]], (1, 1, 1),
                          "/tmp/.hidden"),
    "tabs-and-lines": tables(0, [record(text("a\tb\nc.wav"), 1, 0, plain(1), plain(1), plain(0))], 1,
                             [entry(text("\t\n"), "a\tb", "c\nd", 1, plain(1))], NUMBERS, (1, 0, 0, 0, 1, 1),
                             [text("a\nb")] * 6, LISTS, (1, 1, 1), "tab\there.txt", "a/b"),
})


# --- The journal: "t", where it is torn, a text; or "w", where it is damaged, by which byte, and a session.
PARAMETERS = {
    "fs": 48000, "alwaysPlotEntireWaveformFlag": 1, "upperFrequencyToPlot": 2000, "outputFilePath": "/results",
    "wavFilePath": "/tokens", "subCode": "CHD001", "outputFileName": "r.txt", "outputFileName_entries": "e.txt",
    "outputFileName_parameters": "p.txt", "sesTypeNames": ["practice", "experiment"], "sesTypeIndex": 1,
    "soundTypeNames": [".wav files", "reserved"], "soundTypeIndex": 0,
    "mainParameterNames": ["sound files", "reserved"], "mainParameterIndex": 0, "sesNum": 1, "nTimes": 1, "si": 1,
    "threshold": 0, "reactionTime": 0, "saveData": True, "feedBack": True, "autoPlay": True,
}


def head(tokens=("MOV001_01.wav", "MOV002_01.wav"), order=(1, 0), **changed):
    return {"type": "session", "format": 1, "program": "Ostrine", "version": "0.14", "qt": "6.4.2", "output": "Speakers",
            "started": "2026-11-22T08:01:50.123Z", "parameters": PARAMETERS, "tokens": list(tokens),
            "order": list(order)} | changed


def answer(trial, token, name, stim="mother", resp="mother", rt=512, **changed):
    return {"type": "answer", "trial": trial, "token": token, "filename": name, "stim": stim, "resp": resp,
            "correctness": stim == resp, "rt": rt, "presentation": {"late": 0.25}} | changed


def end(word="finished"):
    return {"type": "end", "end": word} | ({"parameters": PARAMETERS} if word == "finished" else {})


SAVE = {"type": "save", "files": [{"path": "/results/r.txt", "sha256": "ab" * 32},
                                  {"path": "/results/r_entries.txt", "sha256": ""}]}


def torn(text, place=0):
    return b"t" + struct.pack("<H", place) + text


def journal(*lines, place=0):
    return torn(b"".join(json.dumps(line, separators=(",", ":")).encode() + b"\n" for line in lines), place)


FIRST, SECOND = answer(1, 1, "MOV002_01.wav", "stranger", "mother", 812), answer(2, 0, "MOV001_01.wav")
THIRD, FOURTH = answer(3, 1, "MOV002_01.wav", "stranger", "mother", 611), answer(4, 0, "MOV001_01.wav", rt=411)
TWICE = head(order=[1, 0, 1, 0])


def written(place, damage, names, order, answers, ending):
    return (b"w" + struct.pack("<HB", place, damage) + text("Speakers") + plain(48000) + plain(1) + text("CHD001")
            + text("/tokens") + struct.pack("<iBB", 1, 1, len(names) - 1) + b"".join(names)
            + bytes([len(order), *order]) + b"".join(answers) + ending)


def given(mother, rt):
    return bytes([1, mother]) + plain(rt) + text("late") + struct.pack("<i", 250)


FINISHED = bytes([0]) + struct.pack("<i", 2) + bytes([1, 1]) + text("/results/r.txt") + bytes([2, 0xAB, 0xCD])

write("journal", {
    "finished": journal(head(), FIRST, SECOND, end(), SAVE, place=700),
    "quit": journal(head(), FIRST, end("quit"), place=1200),
    "broken-off": journal(head(), end("broken off"), place=5),
    "stopped": journal(head(), FIRST),
    "no-head": journal(FIRST, SECOND, end()),
    "second-head": journal(head(), FIRST, head(tokens=["x"], order=[]), SECOND),
    "two-presentations": journal(TWICE, FIRST, SECOND, THIRD, FOURTH, end(), SAVE),
    "finished-twice": journal(TWICE, FIRST, SECOND, THIRD, FOURTH, end(), end(), SAVE, SAVE),
    "answer-behind-the-end": journal(TWICE, FIRST, THIRD, end(), SECOND, FOURTH),
    "quit-behind-the-end": journal(TWICE, FIRST, SECOND, THIRD, end(), end("quit")),
    "answered-twice": journal(head(), FIRST, FIRST, SECOND),
    "far-away": journal(head(), answer(3, 0, "a"), answer(0, 0, "a"), answer(-2**31, 0, "a"), answer(2**31, 0, "a"),
                        answer(1, 2, "a"), answer(1, -1, "a"), answer(1.5, 0.5, "a")),
    "order-far-away": journal(head(order=[2]), head(order=[-1]), head(order=[0.5]), head(order=["0"])),
    "other-types": journal(head(tokens=[1, None, {}], order=[0]), answer("1", [], 0, 1, True, "512"), {"type": 1}, [],
                           end("never"), {"type": "end"}, {"type": "save"}, {"type": "save", "files": [1, {}]}),
    "other-words": journal(head(), answer(1, 1, "a", "father", "mother"), answer(1, 1, "a", "mother", "")),
    "large-numbers": journal(head(), answer(1, 1, "MOV002_01.wav", rt=1e308), answer(2, 1, "MOV002_01.wav", rt=1e308)),
    "no-order": journal(head(tokens=[], order=[]), end()),
    "no-text": torn(b""),
    "lines": torn(b"\n\n\r\n{}\nnull\n[\n\0\n{\"type\":\"session\"}\n"),
    "names": journal(head(tokens=["M\u00fctter \ud83d\ude00.wav", "a\tb\n.wav"]), answer(1, 1, "\ud800")),
    "written": written(600, 0x22, [A, B], [1, 0], [given(0, 812), given(1, 512)], FINISHED),
    "written-on": written(900, 0x30, [A, B], [1, 0, 1], [given(0, 812), given(1, 512), given(1, 611)],
                          bytes([1]) + FINISHED[1:5] + bytes([0]) + given(1, 999)[1:] + FINISHED[1:]),
    "written-quit": written(900, 0x0A, [A, B], [1, 0, 0], [given(1, 812)], bytes([0, 3])),
    "written-stopped": written(1000, 0x7D, [text("Mütter €.wav"), A], [0, 1], [given(0, 1), given(0, 2)], bytes([4])),
    "written-nothing": written(3, 0x00, [A], [], [], bytes([2])),
})
