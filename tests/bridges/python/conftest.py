"""Products for the tests, simulated once a run, and readers of their files that share nothing with the package."""
import os
import shutil
import subprocess
from pathlib import Path

import numpy
import pytest
from hypothesis import settings

BUILD, MADE = Path(os.environ["TSX_BUILD"]), Path(os.environ["TSX_MADE"])
LINES, SAMPLES = 300, 260

# The same examples in every run, and nothing left in the source tree.
settings.register_profile("tests", database=None, derandomize=True)
settings.load_profile("tests")


def simulate(name, *options, lines=LINES, samples=SAMPLES):
    """A new product; gives its annotation."""
    folder = MADE / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    command = [BUILD / "bin/tsx-simulate", folder, "--lines", lines, "--samples", samples, *options]
    return Path(
        subprocess.run([str(c) for c in command], check=True, capture_output=True, text=True).stdout.strip()
    )


def gridkit_says(*arguments):
    """What the command line prints as JSON."""
    import json

    done = subprocess.run(
        [str(a) for a in (BUILD / "bin/gridkit", *arguments)], check=True, capture_output=True
    )
    return json.loads(done.stdout)


def cosar(annotation, lines=LINES, samples=SAMPLES, number=0):
    """A complex image as complex64, read from its file: four records before the lines, two words before the samples."""
    file = sorted((annotation.parent / "IMAGEDATA").iterdir())[number]
    records = numpy.memmap(file, ">i2", "r", shape=(lines + 4, samples + 2, 2))
    parts = records[4:, 2:].astype(numpy.float32)
    return parts[..., 0] + 1j * parts[..., 1]


@pytest.fixture(scope="session")
def ssc():
    return simulate("ssc")


@pytest.fixture(scope="session")
def dual():
    return simulate("dual", "--polarisations", "HH,VV")


@pytest.fixture(scope="session")
def mgd():
    return simulate("mgd", "--variant", "MGD")


@pytest.fixture(scope="session")
def gec():
    return simulate("gec", "--variant", "GEC")


@pytest.fixture
def copied(ssc, tmp_path):
    """An SSC product of the test's own, to be damaged."""
    return Path(shutil.copytree(ssc.parent, tmp_path / "copied")) / ssc.name
