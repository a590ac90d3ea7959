# SPDX-License-Identifier: GPL-3.0-or-later
"""The Debian package, made by CPack from a build folder and unpacked: what is in it, and whether the tools of a
desktop and of Debian accept it.

    python3 test_package.py BUILD_FOLDER
"""

import gzip
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from html.parser import HTMLParser
from pathlib import Path

HERE = Path(__file__).resolve().parent
CHECKOUT = HERE.parents[1]
# An option and the name of its argument, as man pages and --help show them
OPTION = r"((?:-\w, )?--?[\w-]+(?: [A-Z]+(?= |$))?)"
BUILD = None


def run(*command, **options):
    """What a command writes to both outputs; it must succeed."""
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", **options)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {result.returncode}:\n{result.stdout}")
    return result.stdout


class Links(HTMLParser):
    """The addresses and the ids of a page."""

    def __init__(self, page):
        super().__init__()
        self.addresses, self.ids = [], set()
        self.feed(page.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src"):
                self.addresses.append(value)
            elif name == "id":
                self.ids.add(value)


def desktop_entry(path):
    """The keys of a desktop entry, each with the name of its group before it."""
    keys, group = {}, None
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("["):
            group = line.strip("[]")
        elif "=" in line:
            key, _, value = line.partition("=")
            keys[group, key] = value
    return keys


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        # Lintian leaves temporary files, and so does Qt where there is no runtime folder.
        os.environ["TMPDIR"] = cls.folder.name
        cls.addClassCleanup(cls.folder.cleanup)
        folder = Path(cls.folder.name)
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder / "package")
        [cls.package] = (folder / "package").glob("*.deb")
        cls.root = folder / "root"
        run("dpkg-deb", "--extract", cls.package, cls.root)
        cls.share = cls.root / "usr/share"

    def field(self, name):
        return run("dpkg-deb", "--field", self.package, name).strip()

    # Catches a file that is missing, is installed elsewhere or is left over, a man page or changelog that is not
    # compressed, and a file that other users cannot read or may write to.
    def test_contains_what_is_installed_and_what_debian_requires(self):
        installed = (HERE / "installed-files.txt").read_text(encoding="utf-8").split()
        expected = {"usr/" + re.sub(r"(man1/.*)", r"\1.gz", name) for name in installed}
        expected |= {f"usr/share/doc/ostrine/{name}" for name in ("changelog.gz", "changelog.Debian.gz", "copyright")}
        expected |= {f"usr/share/doc/ostrine/manual/images/{picture.name}"
                     for picture in (CHECKOUT / "docs/images").iterdir()}
        lines = [line.split() for line in run("dpkg-deb", "--contents", self.package).splitlines()]
        files = {line[-1].removeprefix("./"): line[0] for line in lines if not line[0].startswith("d")}
        self.assertEqual(set(files), expected)
        for name, mode in files.items():
            self.assertEqual(mode, "-rwxr-xr-x" if name.startswith("usr/bin/") else "-rw-r--r--", name)
        self.assertEqual({(line[0], line[1]) for line in lines if line[0].startswith("d")},
                         {("drwxr-xr-x", "root/root")})

    # Catches a library, Wayland's plugin or the sound server left out, another name or section, a maintainer who
    # cannot be written to, and a version that does not tell the release of Debian.
    def test_control_fields_tell_what_the_programs_need(self):
        depends = {re.match(r"[^ ]+", item)[0].removesuffix("t64") for item in self.field("Depends").split(", ")}
        self.assertEqual(depends, {"libc6", "libgcc-s1", "libpulse0", "libqt6charts6", "libqt6core6", "libqt6gui6",
                                   "libqt6multimedia6", "libqt6widgets6", "libstdc++6", "qt6-wayland"})
        self.assertEqual(self.field("Recommends"), "pipewire-pulse | pulseaudio")
        self.assertEqual(self.field("Package"), "ostrine")
        self.assertEqual(self.field("Section"), "science")
        self.assertEqual(self.field("Architecture"), run("dpkg", "--print-architecture").strip())
        self.assertRegex(self.field("Maintainer"), r"^[^<>]+ <[^@ ]+@[^@ ]+>$")
        version = run(self.root / "usr/bin/ostrine-tools", "--version").split()[1]
        release = re.search(r'^VERSION_ID="?([^"\n]*)', Path("/etc/os-release").read_text(encoding="utf-8"),
                            flags=re.MULTILINE)
        self.assertEqual(self.field("Version"), f"{version}-0deb{release[1] if release else ''}")
        for name in ("changelog", "changelog.Debian"):
            self.assertIn(version, gzip.open(self.share / f"doc/ostrine/{name}.gz", "rt", encoding="utf-8").read())

    # Catches programs that are not stripped, a wrong copyright file or changelog, a bad description, and whatever else
    # lintian knows. Warnings fail as errors do, except one of newer versions: AppStream misses a homepage.
    def test_lintian_finds_nothing(self):
        found = run("lintian", "--allow-root", "--fail-on", "error", self.package)
        warnings = re.findall(r"^W: .*", found, flags=re.MULTILINE)
        self.assertEqual([line for line in warnings if "appstream-metadata-validation-failed" not in line], [])

    # Catches a broken desktop entry, one whose program or icon is not installed, and a lost action.
    def test_desktop_entries_start_the_programs(self):
        for program in ("ostrine", "ostrine-tools"):
            path = self.share / f"applications/{program}.desktop"
            self.assertEqual(run("desktop-file-validate", path), "")
            keys = desktop_entry(path)
            self.assertEqual(keys["Desktop Entry", "Exec"], program)
            self.assertTrue(os.access(self.root / "usr/bin" / program, os.X_OK))
            icon = keys["Desktop Entry", "Icon"]
            for size in (48, 128, 256):
                picture = self.share / f"icons/hicolor/{size}x{size}/apps/{icon}.png"
                self.assertEqual(struct.unpack(">4xII", picture.read_bytes()[12:24]), (size, size))
            drawing = ElementTree.parse(self.share / f"icons/hicolor/scalable/apps/{icon}.svg").getroot()
            self.assertEqual(drawing.tag, "{http://www.w3.org/2000/svg}svg")
        keys = desktop_entry(self.share / "applications/ostrine.desktop")
        action = "Desktop Action " + keys["Desktop Entry", "Actions"].rstrip(";")
        self.assertEqual((keys[action, "Name"], keys[action, "Exec"]), ("Check a folder of tokens", "ostrine-tools"))

    # Catches metainfo that a software catalogue refuses, and that names an entry or a program that is not installed.
    # Newer versions of AppStream warn where there is no homepage, and then end as after an error.
    def test_metainfo_is_valid(self):
        [path] = (self.share / "metainfo").iterdir()
        found = subprocess.run(["appstreamcli", "validate", "--no-net", path], stdout=subprocess.PIPE, encoding="utf-8")
        self.assertIn("alidation", found.stdout)
        problems = re.findall(r"^[EW]: .*", found.stdout, flags=re.MULTILINE)
        self.assertEqual([line for line in problems if not line.strip().endswith("url-homepage-missing")], [])
        component = ElementTree.parse(path).getroot()
        self.assertEqual(path.name, component.findtext("id") + ".metainfo.xml")
        for launchable in component.iter("launchable"):
            self.assertTrue((self.share / "applications" / launchable.text).is_file())
        for program in component.iter("binary"):
            self.assertTrue((self.root / "usr/bin" / program.text).is_file())
        self.assertIsNone(component.find("screenshots"))

    # Catches metainfo with pictures that is refused, or whose pictures are not in the source tree.
    def test_metainfo_has_pictures_where_there_is_a_homepage(self):
        homepage = "https://example.org/ostrine"
        path = Path(self.folder.name) / "pictures.metainfo.xml"
        script = Path(self.folder.name) / "pictures.cmake"
        script.write_text(f"set(PROJECT_VERSION 1.0)\nset(OSTRINE_RELEASE_DATE 2026-01-01)\n"
                          f"include({CHECKOUT}/packaging/metainfo.cmake)\n"
                          f"ostrine_metainfo({homepage} {path})\n", encoding="utf-8")
        run("cmake", "-P", script)
        run("appstreamcli", "validate", "--no-net", path)
        component = ElementTree.parse(path).getroot()
        self.assertEqual(component.findtext("url"), homepage)
        self.assertTrue(all(screenshot.findtext("caption") for screenshot in component.iter("screenshot")))
        pictures = [image.text for image in component.iter("image")]
        self.assertEqual(len(set(pictures)), 3)
        for picture in pictures:
            self.assertTrue((CHECKOUT / picture.removeprefix(homepage + "/")).is_file(), picture)

    # Catches a link that leads nowhere, a picture that is not shown, and markup that was left as it was written.
    def test_pages_are_linked_and_formatted(self):
        folder = self.share / "doc/ostrine/manual"
        pages = {page: Links(page) for page in folder.glob("*.html")}
        self.assertEqual(len(pages), 3)
        shown = set()
        for page, links in pages.items():
            for address in links.addresses:
                if ":" in address:
                    continue  # another site
                name, _, anchor = address.partition("#")
                target = folder / name if name else page
                self.assertTrue(target.is_file(), f"{page.name}: {address}")
                if anchor:
                    self.assertIn(anchor, pages[target].ids, f"{page.name}: {address}")
                shown.add(target)
            text = page.read_text(encoding="utf-8")
            self.assertIn("<table>", text)
            self.assertNotIn("|---", text)
            self.assertNotIn("](", re.sub(r"<pre>.*?</pre>", "", text, flags=re.DOTALL))
        self.assertLessEqual(set(pages) - {folder / "manual.html"}, shown)
        named = set(re.findall(r"images/[\w-]+\.png", (CHECKOUT / "docs/manual.md").read_text(encoding="utf-8")))
        self.assertGreater(len(named), 10)
        self.assertLessEqual({folder / name for name in named}, shown)

    def manual_page(self, name):
        """A man page as text. A mistake in its markup fails."""
        environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}
        result = subprocess.run(["man", "--warnings", "--local-file", self.share / f"man/man1/{name}.1.gz"],
                                capture_output=True, encoding="utf-8", env=environment, check=True)
        self.assertEqual(result.stderr, "")
        return result.stdout

    # Catches wrong markup, an older version or no version, a summary that is broken in the middle, and an example that
    # is wider than the terminal.
    def test_man_pages_are_well_formed(self):
        version = self.field("Version").split("-")[0]
        for name in ("ostrine", "ostrine-tools"):
            page = self.manual_page(name)
            self.assertIn(f"Ostrine {version}", page)
            self.assertRegex(page, rf"\n +{name} +- +\w.*\n\n")
            self.assertEqual([line for line in page.splitlines() if len(line) > 80], [])

    # Catches an option that the man page does not name, that it invents, or that it gives another command or argument.
    def test_man_page_has_the_options_of_each_command(self):
        program = self.root / "usr/bin/ostrine-tools"
        commands = re.findall(r"^  (\w+)  ", run(program, "--help"), flags=re.MULTILINE)
        self.assertEqual(len(commands), 3)
        documented = {}
        heading = None
        for line in self.manual_page("ostrine-tools").splitlines():
            if re.match(r" {0,3}\S", line):
                heading = line.strip()
            elif match := re.match(r" {7}" + OPTION, line):
                documented.setdefault(heading, set()).add(match[1])
        common = documented.pop("COMMON OPTIONS")
        self.assertEqual(set(documented), set(commands))
        for command in commands:
            text = re.sub(r"[<>]", "", run(program, command, "--help"))
            self.assertEqual(documented[command] | common,
                             set(re.findall("^  " + OPTION, text, flags=re.MULTILINE)))


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
