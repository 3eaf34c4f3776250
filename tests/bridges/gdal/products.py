"""Products for the tests of the GDAL driver, and what the project's own programs say of them."""
import json
import shutil
import subprocess
import sys
from pathlib import Path

from osgeo import gdal

BUILD, MADE = Path(sys.argv[1]), Path(sys.argv[2])
LINES, SAMPLES = 300, 260
gdal.UseExceptions()


def run(*command):
    return subprocess.run([str(c) for c in command], capture_output=True, text=True)


def gridkit(*arguments):
    done = run(BUILD / "bin/gridkit", *arguments)
    assert done.returncode == 0, done.stderr
    return done.stdout


def gridkit_says(*arguments):
    return json.loads(gridkit(*arguments))


def simulate(name, *options, lines=LINES, samples=SAMPLES):
    """A new product; gives its annotation."""
    folder = MADE / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    done = run(BUILD / "bin/tsx-simulate", folder, "--lines", lines, "--samples", samples, *options)
    assert done.returncode == 0, done.stderr
    return Path(done.stdout.strip())


def named(path, *rest):
    return ":".join([f'GRIDKIT:"{path}"', *rest])


def opened(path, *rest, options=()):
    return gdal.OpenEx(named(path, *rest), open_options=list(options))


def written(annotation, what, *options):
    """What `gridkit read` writes, as GDAL reads its GeoTIFF."""
    output = MADE / f"{annotation.stem}_{what}_{'_'.join(options)}.tif"
    gridkit("read", "--quiet", "--overwrite", annotation, what, output, *options)
    return gdal.Open(str(output))
