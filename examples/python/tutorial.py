"""A walk through the package gridkit, from opening a product to a Zarr store.

    tutorial.py PRODUCT FOLDER

PRODUCT is an annotation or its folder, of a complex product; FOLDER is made, and pictures and results are left in it.
"""
import sys
from pathlib import Path

import gridkit
import numpy
import xarray

product_path, folder = sys.argv[1], Path(sys.argv[2])
folder.mkdir(parents=True, exist_ok=True)

# Open. What a notebook would show of the product is a piece of a web page.
product = gridkit.open(product_path)
print(product.info["format"], *product.polarisations)
(folder / "product.html").write_text(f"<!DOCTYPE html><meta charset='utf-8'>{product._repr_html_()}")

# Look. A small picture, its pixels square on the ground.
(folder / "quicklook.png").write_bytes(gridkit.png(product.quicklook(longest=600)))

# Calibrate. Nothing is read before it is sliced; here every fourth line and sample.
name = product.images[0]
brightness = product.beta0(name, decibels=True)[::4, ::4]
low, high = numpy.percentile(brightness[numpy.isfinite(brightness)], [2, 98])
greys = numpy.nan_to_num((brightness - low) / (high - low), nan=0, neginf=0).clip(0, 1)
(folder / "beta0.png").write_bytes(gridkit.png((255 * greys).astype(numpy.uint8)))
print(f"beta nought between {low:.1f} and {high:.1f} dB")

# Place. The brightest sample, and where it lies at the scene's average height.
image = product.samples(name)
power = product.beta0(name)
brightest, where = -1.0, (0, 0)
for first in range(0, image.shape[0], 256):
    band = power[first : first + 256]
    line, sample = numpy.unravel_index(numpy.nanargmax(band), band.shape)
    if band[line, sample] > brightest:
        brightest, where = float(band[line, sample]), (first + int(line), int(sample))
latitude, longitude, height = product.locate(*where)
print(f"brightest at line {where[0]}, sample {where[1]}: {latitude:.6f} {longitude:.6f}, {height:.0f} m")

# And back: from a place on Earth to the image.
line, sample = product.find(latitude, longitude, height)
assert abs(line - where[0]) < 0.01 and abs(sample - where[1]) < 0.01

# Cut out. A chip around that target, as far as the image goes, read straight into an array of one's own.
half = 16
first_line = min(max(where[0] - half, 0), image.shape[0] - 2 * half)
first_sample = min(max(where[1] - half, 0), image.shape[1] - 2 * half)
chip = numpy.empty((2 * half, 2 * half), numpy.complex64)
image.read(first_line, first_sample, *chip.shape, out=chip)
numpy.save(folder / "chip.npy", chip)
peak = abs(chip) / abs(chip).max()
(folder / "chip.png").write_bytes(gridkit.png((255 * peak.repeat(8, 0).repeat(8, 1)).astype(numpy.uint8)))
product.close()

# To Zarr, by xarray and in chunks, with all coordinates.
with xarray.open_dataset(product_path, engine="gridkit", group=name, chunks={}) as dataset:
    dataset[["beta0"]].to_zarr(folder / "beta0.zarr", mode="w")
with xarray.open_zarr(folder / "beta0.zarr") as stored:
    print("stored", dict(stored.beta0.sizes), f"mean {float(stored.beta0.mean()):.4g}")
