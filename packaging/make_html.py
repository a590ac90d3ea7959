# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes a document as a page of HTML:

    make_html.py CMARK_GFM DOCUMENT.md PAGE.html

cmark-gfm formats the text. Added here are a head, the headings' ids, which links name, and the new names of the
documents that are linked.
"""

import html
import re
import subprocess
import sys
from pathlib import Path

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>{title}</title>
<style>
:root {{ color-scheme: light dark; }}
body {{ max-width: 48em; margin: 2em auto; padding: 0 1em; font-family: sans-serif; line-height: 1.5; }}
img {{ max-width: 100%; }}
code, pre {{ font-family: monospace, monospace; font-size: 0.9em; overflow-wrap: anywhere; }}
pre code {{ font-size: 1em; }}
pre {{ overflow-x: auto; tab-size: 14; padding: 0.5em; border: 1px solid gray; }}
table {{ display: block; overflow-x: auto; border-collapse: collapse; }}
td code {{ overflow-wrap: normal; }}
@media print {{ pre {{ white-space: pre-wrap; }} }}
th, td {{ padding: 0.2em 0.6em; border: 1px solid gray; text-align: left; vertical-align: top; }}
</style>
</head>
<body>
{body}</body>
</html>
"""


def plain(heading):
    """A heading without its markup."""
    return html.unescape(re.sub(r"<[^>]*>", "", heading))


def anchor(heading):
    """The id by which a link names a heading without markup."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def main():
    cmark, document, page = sys.argv[1:]
    body = subprocess.run([cmark, "--extension", "table", document], stdout=subprocess.PIPE, check=True,
                          encoding="utf-8").stdout
    title = html.escape(plain(re.search(r"<h1>(.*)</h1>", body)[1]))
    body = re.sub(r"<(h\d)>(.*)</", lambda match: f'<{match[1]} id="{anchor(plain(match[2]))}">{match[2]}</', body)
    body = re.sub(r'(<a href="[^":]*)\.md(?=["#])', r"\1.html", body)
    Path(page).write_text(PAGE.format(title=title, body=body), encoding="utf-8")


if __name__ == "__main__":
    main()
