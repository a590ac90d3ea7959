#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks the links and pictures of all documents: every file and heading that a link names is there, every picture
in docs/images is shown somewhere, and none is larger than 100 KB."""

import re
import sys
from pathlib import Path

CHECKOUT = Path(__file__).resolve().parents[1]
sys.path.append(str(CHECKOUT / "packaging"))
from make_html import anchor  # noqa: E402

IMAGES = CHECKOUT / "docs" / "images"
LARGEST_PICTURE = 100_000


def without_code(text):
    """The text without its blocks of code, where brackets are no links."""
    text = re.sub(r"^```.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", "", text)


def anchors(path):
    """The headings of a document, as links name them."""
    headings = re.findall(r"^#+ (.*)$", path.read_text(encoding="utf-8"), flags=re.MULTILINE)
    return {anchor(heading) for heading in headings}


def main():
    problems = []
    targets = set()
    documents = [*CHECKOUT.glob("*.md"), *(path for folder in ("docs", "bench", "examples")
                                           for path in (CHECKOUT / folder).rglob("*.md"))]
    for document in documents:
        for link in re.findall(r"\]\(([^)\s]+)\)", without_code(document.read_text(encoding="utf-8"))):
            if ":" in link:
                continue  # another site
            name, _, heading = link.partition("#")
            target = (document.parent / name).resolve() if name else document
            targets.add(target)
            if not target.exists() or (heading and heading not in anchors(target)):
                problems.append(f"{document.relative_to(CHECKOUT)}: {link} leads nowhere")
    for picture in sorted(IMAGES.iterdir()):
        if picture not in targets:
            problems.append(f"{picture.relative_to(CHECKOUT)} is shown nowhere")
        if picture.stat().st_size > LARGEST_PICTURE:
            problems.append(f"{picture.relative_to(CHECKOUT)} has {picture.stat().st_size} bytes")
    print("\n".join(problems) or f"{len(targets)} targets of links in {len(documents)} documents are there")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
