"""Each element that may repeat without bound, repeated many times.

    hostile_repeats_test.py BUILD FOLDER ROOT

TSX_HOSTILE_REPEATS is how often, 20,000 times without it; TSX_HOSTILE_ELEMENTS a regular expression that picks some of
them by "class/element". A row is printed for each: its file's size, and the seconds and the memory that it took.
"""
import os
import re
import sys
import unittest
from pathlib import Path
from xml.etree import ElementTree

import hostile_files
from hostile_files import SECONDS, attempt, product, rows_of_schema
from programs import ANNOTATION, FOLDER, simulate

ROOT = Path(sys.argv[3])
REPEATS = int(os.environ.get("TSX_HOSTILE_REPEATS", "20000"))
PICKED = re.compile(os.environ.get("TSX_HOSTILE_ELEMENTS", ""))


def around(text, owners, name, unbounded):
    """A short element of that name inside one of the owners, between the text before and behind it; None where the
    document has none."""
    tree = ElementTree.fromstring(text)
    parent = next((p for p in tree.iter() if p.tag in owners and p.find(name) is not None), None)
    if parent is None:
        return None
    element = parent.find(name)
    for inner in element.iter():
        for child in list(inner):
            if child.tag in unbounded and inner.find(child.tag) is not child:
                inner.remove(child)
    parent.insert(list(parent).index(element) + 1, ElementTree.Comment("here"))
    head, tail = ElementTree.tostring(tree, encoding="unicode").split("<!--here-->")
    for inner in element.iter():
        inner.tail = None
        inner.text = inner.text if inner.text and inner.text.strip() else None
    return head, ElementTree.tostring(element, encoding="unicode"), tail


class Repeats(unittest.TestCase):
    def test_every_unbounded_element_many_times(self):
        texts = [simulate("repeats", "--profile", "maximal", "--mode", mode, lines=64, samples=64).read_text()
                 for mode in ("stripmap", "scansar")]
        unbounded = {(c[0], c[1]) for c in rows_of_schema(ROOT) if c[4].endswith("..n")}
        self.assertEqual(49, len(unbounded))
        names = {name for _, name in unbounded}
        # The elements that are of a class; the root is of its own.
        tags = {"c_level1Product": {"level1Product"}}
        for cells in rows_of_schema(ROOT):
            tags.setdefault(cells[3], set()).add(cells[1])
        base = attempt(ANNOTATION, "check", product("plain"), counts=False).megabytes
        picked = [(owner, name) for owner, name in sorted(unbounded) if PICKED.search(f"{owner}/{name}")]
        self.assertTrue(picked)
        print(f"{'element':60} {'MB':>7} {'s':>7} {'ns a byte':>9} {'MB held':>7} {'bytes a byte':>12}")
        for owner, name in picked:
            with self.subTest(owner=owner, name=name):
                head, element, tail = next(filter(None, (around(t, tags[owner], name, names) for t in texts)))
                file = FOLDER / "TSX1_repeats.xml"
                with file.open("w") as out:
                    out.write(head)
                    for _ in range(REPEATS // 1000):
                        out.write(element * 1000)
                    out.write(element * (REPEATS % 1000) + tail)
                size = file.stat().st_size / 1e6
                ended = attempt(ANNOTATION, "check", file, seconds=SECONDS + size / 2, megabytes=60 + 16 * size)
                self.assertEqual(0, ended.status, ended.message)
                print(f"{owner + '/' + name:60} {size:7.1f} {ended.seconds:7.2f} {1000 * ended.seconds / size:9.1f} "
                      f"{ended.megabytes:7.0f} {(ended.megabytes - base) / size:12.2f}", flush=True)
                file.unlink()


if __name__ == "__main__":
    hostile_files.main()
