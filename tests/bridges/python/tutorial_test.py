"""The tutorial runs as it stands and leaves what it says."""
import subprocess
import sys
from pathlib import Path

import numpy
import xarray
from conftest import MADE, cosar
from osgeo import gdal

gdal.UseExceptions()
TUTORIAL = Path(__file__).resolve().parents[3] / "examples/python/tutorial.py"


def test_leaves_pictures_a_chip_and_a_store(ssc):
    folder = MADE / "tutorial"
    done = subprocess.run([sys.executable, "-B", TUTORIAL, ssc, folder], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert done.stdout.startswith("TerraSAR-X HH\nbeta nought between ")

    truth = cosar(ssc)
    line, sample = numpy.unravel_index(numpy.argmax(abs(truth)), truth.shape)
    assert f"brightest at line {line}, sample {sample}: " in done.stdout
    chip = numpy.load(folder / "chip.npy")
    assert chip.shape == (32, 32) and abs(chip).max() == abs(truth).max()
    with xarray.open_zarr(folder / "beta0.zarr") as stored:
        power = (truth.real.astype(float) ** 2 + truth.imag.astype(float) ** 2) * 1.05957369e-05
        numpy.testing.assert_allclose(stored.beta0, power, rtol=1e-6)
    for picture in ("quicklook", "beta0", "chip"):
        greys = gdal.Open(str(folder / f"{picture}.png")).ReadAsArray()
        assert greys.min() < 50 and greys.max() > 200
    assert "<img" in (folder / "product.html").read_text()
