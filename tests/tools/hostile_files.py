"""What the tests of hostile files share: products to spoil, and programs run within limits.

A command counts as well behaved when it ends within its time and memory, by itself, with 0 or with 1 and a
message that says what was refused.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from programs import BUILD, FOLDER, simulate

SETTINGS = (BUILD / "CMakeCache.txt").read_text()
SANITIZED = re.search(r"^TSX_SANITIZE:\w+=\w", SETTINGS, re.M) is not None
# What is sanitized, or not optimised because its coverage is counted, takes its time.
OPTIMISED = re.search(r"^CMAKE_BUILD_TYPE:\w+=Release", SETTINGS, re.M) is not None and not SANITIZED
SECONDS = 20 if OPTIMISED else 100
MEGABYTES = 400
LONGEST_MESSAGE = 10_000

tried = 0


def rows_of_schema(root):
    """The rows of the schema's tables as lists of cells."""
    for table in sorted((root / "schema/level1Product").glob("*.tsv")):
        if table.stem in ("valueSets", "enumeration", "globals"):
            continue
        for line in table.read_text().splitlines():
            if line.strip() and not line.startswith("#") and not line.startswith("class\t"):
                yield line.split("\t")


class Ended:
    """How a command ended: its status, what it wrote, its seconds and its peak of memory in MB."""

    def __init__(self, command, limit, folder=None):
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            start = time.monotonic()
            child = subprocess.Popen([os.fsencode(c) if isinstance(c, Path) else str(c) if not
                                      isinstance(c, bytes) else c for c in command],
                                     stdin=subprocess.DEVNULL, stdout=out, stderr=err, cwd=folder)
            usage = None
            while usage is None:
                pid, status, used = os.wait4(child.pid, os.WNOHANG)
                if pid != 0:
                    usage = used
                elif time.monotonic() - start > limit:
                    child.kill()
                    os.wait4(child.pid, 0)
                    child.returncode = -9
                    raise AssertionError(f"{command} did not end within {limit} s")
                else:
                    time.sleep(0.002)
            self.seconds = time.monotonic() - start
            self.megabytes = usage.ru_maxrss / 1024
            self.status = child.returncode = os.waitstatus_to_exitcode(status)
            out.seek(0)
            err.seek(0)
            self.stdout, self.stderr = out.read(), err.read(1 << 20)

    @property
    def message(self):
        return self.stderr.decode(errors="replace")


def attempt(*command, statuses=(0, 1), seconds=SECONDS, megabytes=MEGABYTES, counts=True, folder=None,
            messages=1):
    """Runs a command on a hostile file and checks that it behaves."""
    global tried
    tried += counts
    ended = Ended(command, seconds, folder)
    if ended.status not in statuses:
        raise AssertionError(f"{command} gave {ended.status}: {ended.message[:2000]}")
    if ended.status == 1 and not re.match(r"(gridkit|tsx-annotation): \S", ended.message):
        raise AssertionError(f"{command} does not say what it refused: {ended.message[:2000]!r}")
    if len(ended.stderr) > LONGEST_MESSAGE * messages:
        raise AssertionError(f"{command} says too much: {len(ended.stderr)} bytes")
    if ended.megabytes > megabytes and not SANITIZED:
        raise AssertionError(f"{command} took {ended.megabytes:.0f} MB")
    return ended


def layers(ended):
    return re.findall(r"^  (X_\w+)", ended.stdout.decode(errors="replace"), re.M)


def live(annotations, seconds=SECONDS, megabytes=1500):
    """Lets a host live through products; gives for each what it was refused with, "" for none."""
    global tried
    tried += len(annotations)
    command = [BUILD / "tests/hostile_host", BUILD / "lib/gridkit/tsx.so", *annotations]
    ended = attempt(*command, statuses=(0,), seconds=seconds, megabytes=megabytes, counts=False)
    lines = ended.stdout.decode(errors="replace").splitlines()
    assert len(lines) == len(annotations), ended.stdout
    return ["" if line == "good" else line.removeprefix("refused: ") for line in lines]


def spoiled(annotation, name, content):
    """A copy of a product's annotation with other content, beside it."""
    file = annotation.parent / name
    file.write_bytes(content if isinstance(content, bytes) else content.encode())
    return file


def image_of(annotation):
    return sorted((annotation.parent / "IMAGEDATA").iterdir())[0]


def product(name, variant="SSC", **size):
    size = {"lines": 64, "samples": 64, **size}
    return simulate(name, "--variant", variant, "--profile", "minimal", **size)


def with_value(text, element, value):
    """The annotation with the value in the first element of that name."""
    changed, count = re.subn(rf"(<{element}(?: [^>]*)?>)[^<]*(</{element}>)",
                             lambda m: m[1] + value + m[2], text, count=1)
    assert count == 1, element
    return changed


def copies(annotation, texts):
    """Annotations beside a product's own, one a text."""
    return [spoiled(annotation, f"TSX1_{i}.xml", text) for i, text in enumerate(texts)]


def main():
    """Runs the tests of the program, tells how many files were tried, and removes them."""
    program = unittest.main(argv=sys.argv[:1] + sys.argv[4:], exit=False)
    print(f"hostile files tried: {tried}")
    shutil.rmtree(FOLDER, ignore_errors=True)
    sys.exit(not program.result.wasSuccessful())
