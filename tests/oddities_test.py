"""Oddities that are kept on purpose: the sources mark each with the same words, and docs/decisions.md has a table of
them with the files where they stand. Each side must know the other.

    oddities_test.py ROOT
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])
MARK = "Kept on purpose:"
FOLDERS = ("plugin", "record", "geometry", "image", "binding", "schema", "platform", "companion", "tools")


def marked_files():
    files = (f for folder in FOLDERS for f in (ROOT / folder).rglob("*") if f.suffix in (".cpp", ".h", ".inc", ".py"))
    return {str(f.relative_to(ROOT)) for f in files if MARK in f.read_text()}


def rows():
    table = (ROOT / "docs/decisions.md").read_text().split("## Kept on purpose\n")[1]
    return [line.split("|")[1:-1] for line in table.splitlines() if line.startswith("| ")][1:]


class Oddities(unittest.TestCase):
    def test_every_row_tells_what_follows_and_where(self):
        self.assertGreater(len(rows()), 20)
        for row in rows():
            self.assertEqual(3, len(row), row)
            self.assertTrue(row[0].strip() and row[2].strip(), row)

    def test_every_place_of_the_table_has_the_mark(self):
        for row in rows():
            for place in re.findall(r"`([a-z_/]+\.(?:cpp|h|inc|py))`", row[2]):
                with self.subTest(row=row[0], place=place):
                    self.assertIn(place, marked_files())

    def test_every_marked_file_stands_in_the_table(self):
        told = " ".join(row[2] for row in rows())
        for place in sorted(marked_files()):
            with self.subTest(place=place):
                self.assertIn(f"`{place}`", told)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
