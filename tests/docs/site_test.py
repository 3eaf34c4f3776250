"""What builds the site and its reference: the check of it finds what it is there for, and headers come to Doxygen as meant.

    site_test.py BUILD FOLDER ROOT
"""
import re
import shutil
import subprocess
import sys
import unittest

from pages import FOLDER, ROOT

GOOD = {"index.html": '<a href="reference.html">C and C++</a><img src="a.png">', "a.png": "",
        "reference.html": '<h1 id="top"></h1><a href="reference/files.html">open</a>',
        "reference/files.html": '<a href="../index.html">The documents</a><a href="../reference.html#top">x</a>',
        "reference/search/all_0.html": "<p>framed</p>"}


def check(**changed):
    """What the check says of a site with these files in place of good ones."""
    shutil.rmtree(FOLDER, ignore_errors=True)
    for name, content in (GOOD | changed).items():
        file = FOLDER / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content)
    done = subprocess.run([sys.executable, "-B", ROOT / "scripts/documents/check_site.py", FOLDER], capture_output=True, text=True)
    assert done.returncode == (1 if done.stderr else 0), done
    return done.stderr


class Check(unittest.TestCase):
    def test_finds_nothing_in_a_good_site(self):
        self.assertEqual("", check())

    def test_finds_what_a_browser_would_ask_for(self):
        self.assertIn("asks for https://example.com/x.css",
                      check(**{"index.html": GOOD["index.html"] + '<link rel="stylesheet" href="https://example.com/x.css">'}))
        self.assertIn("asks for //example.com/x.png", check(**{"x.css": "a { background: url(//example.com/x.png) }"}))

    def test_finds_links_that_lead_nowhere(self):
        self.assertIn("none.html leads nowhere", check(**{"index.html": GOOD["index.html"] + '<a href="none.html">x</a>'}))
        self.assertIn("reference.html#none names no place of its page",
                      check(**{"index.html": '<a href="reference.html#none">x</a>'}))

    def test_finds_a_page_of_the_reference_without_a_link_back(self):
        self.assertIn("reference/a.html: does not lead back to the site",
                      check(**{"reference/a.html": '<a href="files.html">x</a>'}))

    def test_finds_that_nothing_leads_to_the_reference(self):
        self.assertIn("no page leads to the reference", check(**{"reference.html": "<h1>C and C++</h1>"}))


class Reference(unittest.TestCase):
    def test_is_told_how_to_lead_back(self):
        settings = (ROOT / "scripts/documents/Doxyfile").read_text()
        for name, link in (("reference_footer.html", '<a href="$relpath^../index.html">'),
                           ("reference_layout.xml", '<tab type="user" url="../index.html"')):
            self.assertIn(f"= scripts/documents/{name}\n", settings)
            self.assertIn(link, (ROOT / "scripts/documents" / name).read_text())

    def test_shows_comments_and_their_tables(self):
        FOLDER.mkdir(parents=True, exist_ok=True)
        header = FOLDER / "header.h"
        header.write_text("""#pragma once

// About the header.

// Adds <two> numbers:
//
//   a   the first
//   b   the second
//
// and never fails.
int add(int a, int b);  // to be used
""")
        shown = subprocess.run([sys.executable, "-B", ROOT / "scripts/documents/doxygen_filter.py", header], check=True,
                               capture_output=True, text=True).stdout
        self.assertEqual("""#pragma once

/// @file
/// About the header.

/// Adds \\<two\\> numbers:
///
///
///       a   the first
///       b   the second
///
///
/// and never fails.
int add(int a, int b);  ///< to be used
""", shown)


class Pictures(unittest.TestCase):
    def test_of_the_readme_are_there_small_and_made_by_the_script(self):
        names = re.findall(r"docs/pictures/([\w.-]+)", (ROOT / "README.md").read_text())
        self.assertEqual({"quicklook.png", "report.png"}, set(names))
        files = list((ROOT / "docs/pictures").iterdir())
        self.assertEqual(set(names), {file.name for file in files})
        script = (ROOT / "scripts/pictures").read_text()
        for file in files:
            self.assertEqual(b"\x89PNG\r\n\x1a\n", file.read_bytes()[:8])
            self.assertIn(f"$pictures/{file.name}", script)
        self.assertLess(sum(file.stat().st_size for file in files), 400 * 1024)


if __name__ == "__main__":
    unittest.main(argv=["docs"])
