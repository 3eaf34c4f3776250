"""Every test that the table of limits names is there.

    limits_test.py ROOT
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])


def tests():
    """Names of all tests, "Suite.Test" or "Class.test"."""
    for file in (ROOT / "tests").rglob("*.cpp"):
        for suite, name in re.findall(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", file.read_text(), re.M):
            yield f"{suite}.{name}"
    for file in (ROOT / "tests").rglob("*_test.py"):
        owner = None
        for kind, name in re.findall(r"^(class|    def) (\w+)", file.read_text(), re.M):
            if kind == "class":
                owner = name
            elif name.startswith("test_"):
                yield f"{owner}.{name}"


class Limits(unittest.TestCase):
    text = (ROOT / "docs/limits.md").read_text()
    known = set(tests())

    def test_every_row_names_its_tests(self):
        rows = [line for line in self.text.splitlines() if re.match(r"\| (?!what)", line)]
        self.assertGreater(len(rows), 25)
        for row in rows:
            named = re.findall(r"`(\w+\.\w+)`", row.split("|")[3])
            with self.subTest(row=row):
                self.assertTrue(named)
                self.assertEqual(set(), set(named) - self.known)

    def test_every_test_that_is_named_exists(self):
        named = set(re.findall(r"`([A-Z]\w+\.\w+)`", self.text))
        self.assertGreater(len(named), 40)
        self.assertEqual(set(), named - self.known)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
