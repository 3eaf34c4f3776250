"""The programs of a build and a folder to work in, as the tests' two arguments name them."""
import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

BUILD, FOLDER = Path(sys.argv[1]), Path(sys.argv[2])
GRIDKIT, ANNOTATION, SIMULATE = (BUILD / "bin" / n for n in
                                 ("gridkit", "tsx-annotation", "tsx-simulate"))


def run(*command, status=0):
    """What the command did; fails unless it exits with the status."""
    done = subprocess.run([str(c) for c in command], capture_output=True)
    if done.returncode != status:
        raise AssertionError(f"{command} gave {done.returncode}: {done.stderr.decode()}")
    return done


def text(*command, status=0):
    return run(*command, status=status).stdout.decode()


def complaint(*command, status=1):
    """What a refused command says; it prints nothing else."""
    done = run(*command, status=status)
    assert done.stdout == b"", done.stdout
    return done.stderr.decode()


def simulate(name, *options, lines=300, samples=260):
    """A new product; gives its annotation."""
    folder = FOLDER / name
    shutil.rmtree(folder, ignore_errors=True)
    printed = text(SIMULATE, folder, "--lines", lines, "--samples", samples, *options)
    return Path(printed.strip())


def cut(annotation, lines, samples=260):
    """Ends a product's complex image, of lines of that many samples, after some of its lines."""
    image = next((annotation.parent / "IMAGEDATA").iterdir())
    # Four records of annotation and one a line, each of two words and the samples, 4 bytes each.
    os.truncate(image, 4 * (4 + lines) * (2 + samples))
    return annotation


def real_annotations():
    """Annotations of real products, where some are at hand: TSX_REAL_ANNOTATIONS names their folder."""
    folder = os.environ.get("TSX_REAL_ANNOTATIONS")
    return sorted(Path(folder).glob("T?X*.xml")) if folder else []


def main():
    """Runs the tests of the calling file in a folder without what earlier runs left."""
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    unittest.main(module="__main__", argv=sys.argv[:1])
