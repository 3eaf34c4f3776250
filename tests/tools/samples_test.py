"""Samples from the outside: what `gridkit read PRODUCT IMAGE` writes, beside a reader of this test's own.

    samples_test.py BUILD FOLDER
"""
import json
import os
import random
import struct
import subprocess
import unittest
from pathlib import Path

import numpy

from programs import FOLDER, GRIDKIT, complaint, cut, main, real_annotations, run, simulate, text, SIMULATE
from rasters import described, metadata


class Cosar:
    """The bursts of a COSAR file as arrays, by the words of their headers alone."""

    def __init__(self, path):
        content = numpy.fromfile(path, dtype=numpy.uint8)
        self.bursts, at = [], 0
        while at < len(content):
            words = struct.unpack(">7I4sI", content[at:at + 36].tobytes())
            samples, lines, record, records, version = words[2], words[3], words[5], words[6], words[8]
            assert words[7] == b"CSAR", words
            rows = content[at + 4 * record:at + (4 + lines) * record].reshape(lines, record)
            pairs = rows[:, 8:8 + 4 * samples].copy().view(">i2" if version == 1 else ">f2")
            pairs = pairs.reshape(lines, samples, 2).astype(numpy.float32)
            self.bursts.append(pairs[:, :, 0] + 1j * pairs[:, :, 1])
            at += record * records


def image_files(annotation):
    return sorted((annotation.parent / "IMAGEDATA").iterdir())


def listed(annotation):
    return json.loads(text(GRIDKIT, "samples", "--json", annotation))


def read(annotation, image, dtype, window, *options):
    """A window (first column and line, width and height) as an array."""
    output = FOLDER / "window.img"
    done = run(GRIDKIT, "read", annotation, image, output, "--overwrite", "--window", *window, *options)
    return numpy.fromfile(output, dtype=dtype).reshape(window[3], window[2]), done.stderr.decode()


def windows(shape, count=6):
    """Random ones, and the whole."""
    lines, samples = shape
    chosen = random.Random(4)
    yield 0, 0, samples, lines
    for _ in range(count):
        column, line = chosen.randrange(samples), chosen.randrange(lines)
        yield column, line, chosen.randint(1, samples - column), chosen.randint(1, lines - line)


class Complex(unittest.TestCase):
    def compare(self, annotation, images, kind):
        self.assertEqual([(*image.shape, kind) for image in images],
                         [(found["lines"], found["samples"], found["type"]) for found in listed(annotation)])
        for found, image in zip(listed(annotation), images):
            for column, line, width, height in windows(image.shape):
                with self.subTest(image=found["name"], window=(column, line, width, height)):
                    seen, _ = read(annotation, found["name"], numpy.complex64, (column, line, width, height))
                    numpy.testing.assert_array_equal(image[line:line + height, column:column + width], seen)

    def test_one_polarisation(self):
        annotation = simulate("hh", lines=301, samples=203)
        self.compare(annotation, Cosar(*image_files(annotation)).bursts, "cs16")

    def test_two_polarisations(self):
        annotation = simulate("hhvv", "--polarisations", "HH,VV", lines=150, samples=203)
        hh, vv = image_files(annotation)
        self.compare(annotation, Cosar(hh).bursts + Cosar(vv).bursts, "cs16")

    def test_three_bursts(self):
        annotation = simulate("bursts", "--bursts", 3, "--edge-taper", 20, lines=400, samples=150)
        self.assertEqual([1, 2, 3], [image["burst"] for image in listed(annotation)])
        self.compare(annotation, Cosar(*image_files(annotation)).bursts, "cs16")

    def test_wider_records(self):
        annotation = simulate("padded", "--record-padding", 37, lines=200, samples=150)
        self.compare(annotation, Cosar(*image_files(annotation)).bursts, "cs16")

    def test_half_precision(self):
        annotation = simulate("halves", "--sample-type", "half", lines=120, samples=150)
        self.compare(annotation, Cosar(*image_files(annotation)).bursts, "cf32")

    def test_geotiff_holds_complex_integers_and_control_points(self):
        annotation = simulate("tiff", lines=100, samples=90)
        output = FOLDER / "slc.tif"
        done = run(GRIDKIT, "read", annotation, "HH", output)
        self.assertEqual((b"", b""), (done.stdout, done.stderr))
        info = described(output)
        self.assertEqual("CInt16", info["bands"][0]["type"])
        self.assertEqual(15 * 15, len(info["gcps"]["gcpList"]))
        self.assertEqual("HH", metadata(output)["IMAGE"])
        raw = FOLDER / "slc.raw"
        subprocess.run(["gdal_translate", "-q", "-of", "ENVI", "-ot", "CFloat32", output, raw], check=True)
        [image] = Cosar(*image_files(annotation)).bursts
        numpy.testing.assert_array_equal(image, numpy.fromfile(raw, dtype=numpy.complex64).reshape(100, 90))

    def test_brightness_is_the_factor_times_the_power(self):
        annotation = simulate("bright", lines=100, samples=90)
        [image] = Cosar(*image_files(annotation)).bursts
        beta0 = json.loads(text(GRIDKIT, "data", "--json", annotation, ":TSX_Beta0"))
        factor = beta0["value"]["calibration_factor"]
        power = factor * (image.real.astype(float) ** 2 + image.imag.astype(float) ** 2)
        seen, _ = read(annotation, "HH", numpy.float32, (0, 0, 90, 100), "--calibrate", "beta0")
        numpy.testing.assert_array_equal(power.astype(numpy.float32), seen)
        seen, _ = read(annotation, "HH", numpy.float32, (0, 0, 90, 100), "--calibrate", "beta0-db")
        with numpy.errstate(divide="ignore"):
            decibels = 10 * numpy.log10(power)
        self.assertTrue((numpy.isnan(seen) == numpy.isinf(decibels)).all())
        some = ~numpy.isnan(seen)
        self.assertTrue(some.any())
        numpy.testing.assert_allclose(seen[some], decibels[some], rtol=2e-7, atol=1e-6)

    def test_a_file_that_ends_early_gives_what_it_holds(self):
        annotation = simulate("short", lines=100, samples=90)
        [image] = Cosar(*image_files(annotation)).bursts
        cut(annotation, 60, samples=90)
        seen, said = read(annotation, "HH", numpy.complex64, (5, 50, 20, 30))
        self.assertTrue(said.endswith("lines of the image without data, in part or in whole: 60-79\n"), said)
        numpy.testing.assert_array_equal(image[50:60, 5:25], seen[:10])
        self.assertTrue((seen[10:] == 0).all())
        output = FOLDER / "short.tif"
        run(GRIDKIT, "read", annotation, "HH", output, "--calibrate", "beta0")
        self.assertEqual("60-99", metadata(output)["LINES_WITHOUT_DATA"])

    def test_images_for_real_annotations(self):
        """TSX_REAL_ANNOTATIONS names their folder, where some are at hand."""
        for annotation in real_annotations():
            if "_SSC_" not in annotation.name:
                continue
            with self.subTest(annotation.name):
                folder = FOLDER / "real"
                made = Path(text(SIMULATE, "--images-for", annotation, folder).split("\n")[0].strip())
                [found] = listed(made)
                [file] = image_files(made)
                content = numpy.memmap(file, dtype=numpy.uint8, mode="r")
                record = 4 * (found["samples"] + 2)
                lines = content[4 * record:].reshape(found["lines"], record)
                chosen = random.Random(9)
                for _ in range(5):
                    column = chosen.randrange(found["samples"] - 300)
                    line = chosen.randrange(found["lines"] - 200)
                    seen, _ = read(made, found["name"], numpy.complex64, (column, line, 300, 200))
                    pairs = lines[line:line + 200, 8 + 4 * column:8 + 4 * (column + 300)].copy().view(">i2")
                    pairs = pairs.reshape(200, 300, 2).astype(numpy.float32)
                    numpy.testing.assert_array_equal(pairs[:, :, 0] + 1j * pairs[:, :, 1], seen)


class Detected(unittest.TestCase):
    def test_amplitudes_are_the_files(self):
        for variant in ("MGD", "GEC", "EEC"):
            annotation = simulate("det" + variant, "--variant", variant, lines=180, samples=170)
            [found] = listed(annotation)
            self.assertEqual("u16", found["type"])
            raw = FOLDER / "detected.raw"
            subprocess.run(["gdal_translate", "-q", "-of", "ENVI", *image_files(annotation), raw], check=True)
            image = numpy.fromfile(raw, dtype=numpy.uint16).reshape(found["lines"], found["samples"])
            for column, line, width, height in windows(image.shape):
                with self.subTest(variant, window=(column, line, width, height)):
                    seen, _ = read(annotation, found["name"], numpy.uint16, (column, line, width, height))
                    numpy.testing.assert_array_equal(image[line:line + height, column:column + width], seen)


class Refusals(unittest.TestCase):
    def test_are_in_words(self):
        annotation = simulate("refused", lines=100, samples=90)
        output = FOLDER / "refused.tif"
        self.assertEqual(f"gridkit: {annotation}: the window 50 x 60 at column 41, line 0 does not lie in the image "
                         "of 90 x 100\n",
                         complaint(GRIDKIT, "read", annotation, "HH", output, "--window", 41, 0, 50, 60))
        self.assertEqual(f"gridkit: {annotation}: samples are not stretched for the eye; read a layer\n",
                         complaint(GRIDKIT, "read", annotation, "HH", output, "--stretch"))
        self.assertFalse(output.exists())
        run(GRIDKIT, "read", annotation, "HH", FOLDER / "refused.png", status=1)
        self.assertFalse(os.path.exists(FOLDER / "refused.png"))


if __name__ == "__main__":
    main()
