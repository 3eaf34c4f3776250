"""`--calibrate` from the outside: every pixel beside the formulas of radiometry.py, for images and layers, complex and
detected, two polarisations, with the geolocation grid and without, with noise and without.

    radiometry_test.py BUILD FOLDER
"""
import json
import random
import re
import unittest

import numpy

from png import Png
from programs import FOLDER, GRIDKIT, complaint, main, run, simulate, text
from radiometry import Annotation, backscatter
from rasters import metadata, pixels
from report_page import curves, report
from samples_test import Cosar, image_files

KINDS = [quantity + unit for quantity in ("beta0", "sigma0", "gamma0") for unit in ("", "-db")]
SHAPE = (150, 210)


def with_real_noise(annotation):
    """Gives every record of noise, of every polarisation, a cubic of its own, as curved as those of real products."""
    chance = random.Random(11)

    def cubic(match):
        terms = (chance.uniform(250, 400), chance.uniform(-9e5, 9e5), chance.uniform(2e11, 3e11),
                 chance.uniform(-6e14, 6e14))
        body = re.sub(r"<coefficient.*?</coefficient>", "", match.group(2), flags=re.S)
        body = re.sub(r"(<polynomialDegree>)\d+", r"\g<1>3", body)
        return match.group(1) + body + "".join(f'<coefficient exponent="{i}">{term:.17E}</coefficient>'
                                              for i, term in enumerate(terms)) + match.group(3)

    text, count = re.subn(r"(<noiseEstimate>)(.*?)(</noiseEstimate>)", cubic, annotation.read_text(), flags=re.S)
    assert count > 1, count
    annotation.write_text(text)
    return annotation


def calibrated(annotation, name, kind, *options, output="calibrated.img"):
    path = FOLDER / output
    done = run(GRIDKIT, "read", annotation, name, path, "--overwrite", "--calibrate", kind, *options)
    return numpy.fromfile(path, dtype=numpy.float32).reshape(Annotation(annotation).shape), done.stderr.decode()


class EveryPixel(unittest.TestCase):
    def compare(self, annotation, name, polarisation, power, angle):
        told = Annotation(annotation)
        noise = told.noise(polarisation)
        negative = 0
        for kind in KINDS:
            for subtract in (False, True):
                with self.subTest(image=name, kind=kind, subtract=subtract):
                    seen, _ = calibrated(annotation, name, kind, *(["--subtract-noise"] if subtract else []))
                    wanted = backscatter(kind, power, told.factor(polarisation), noise if subtract else 0, angle)
                    numpy.testing.assert_array_equal(numpy.isnan(wanted), numpy.isnan(seen))
                    known = ~numpy.isnan(wanted)
                    tolerance = self.tolerance(kind, power, told.factor(polarisation), angle, wanted)
                    excess = (numpy.abs(seen - wanted) - tolerance)[known]
                    self.assertLessEqual(excess.max(), 0)
                    negative += int((wanted < 0).sum()) if not kind.endswith("-db") else 0
        if told.is_complex:
            self.assertGreater(negative, 0, "the noise must exceed some powers, or nothing is kept below 0")

    @staticmethod
    def tolerance(kind, power, factor, angle, wanted):
        """A millionth of every value. Where power and noise all but cancel, the rounding of what the sensor model
        publishes leaves an error of 1e-8 of the two, which may be more than that of their difference."""
        if not kind.endswith("-db"):
            return 1e-6 * numpy.abs(wanted) + 1e-8 * backscatter(kind, power, factor, 0, angle)
        # The same as decibels, of which a relative error of a power has 10 / ln(10); and a result's own rounding.
        with numpy.errstate(divide="ignore", invalid="ignore"):
            relative = 1e-6 + 1e-8 * backscatter(kind[:-3], power, factor, 0, angle) / 10**(wanted / 10)
        return 10 / numpy.log(10) * relative + 6e-8 * numpy.abs(wanted)

    def both_roads(self, annotation, angle):
        for polarisation, layer, path in zip(("HH", "VV"), ("X_HH_MAGNITUDE_1", "X_VV_MAGNITUDE_3"),
                                             image_files(annotation)):
            [image] = Cosar(path).bursts
            power = image.real.astype(float)**2 + image.imag.astype(float)**2
            self.compare(annotation, polarisation, polarisation, power, angle)
            amplitudes = numpy.floor(numpy.sqrt(power.astype(numpy.float32)))
            self.compare(annotation, layer, polarisation, amplitudes.astype(float)**2, angle)

    def test_of_complex_images_by_the_grid(self):
        annotation = with_real_noise(simulate("grid", "--polarisations", "HH,VV", "--relief", 900, lines=SHAPE[0],
                                              samples=SHAPE[1]))
        self.both_roads(annotation, Annotation(annotation).grid_incidence())

    def test_of_complex_images_by_the_sensor_model(self):
        annotation = with_real_noise(simulate("model", "--polarisations", "HH,VV", "--centre=-49.9,-73.2", "--pass",
                                              "ascending", "--look", "left", "--incidence", 24, lines=SHAPE[0],
                                              samples=SHAPE[1]))
        (annotation.parent / "ANNOTATION/GEOREF.xml").unlink()
        self.both_roads(annotation, Annotation(annotation).ellipsoid_incidence())

    def test_of_detected_images(self):
        for begin, with_grid in (("EARLYAZNEARRG", True), ("LATEAZFARRG", False), ("EARLYAZFARRG", True)):
            annotation = with_real_noise(simulate("mgd", "--variant", "MGD", "--polarisations", "HH,VV",
                                                  "--start-with", begin, lines=SHAPE[0], samples=SHAPE[1]))
            told = Annotation(annotation)
            if not with_grid:
                (annotation.parent / "ANNOTATION/GEOREF.xml").unlink()
            angle = told.grid_incidence() if with_grid else told.ellipsoid_incidence()
            for polarisation, layer, path in zip(("HH", "VV"), ("X_HH_MAGNITUDE_1", "X_VV_MAGNITUDE_2"),
                                                 image_files(annotation)):
                with self.subTest(begin=begin):
                    power = numpy.array(pixels(path, "UInt16"), dtype=float)**2
                    self.compare(annotation, polarisation, polarisation, power, angle)
                    self.compare(annotation, layer, polarisation, power, angle)

    def test_of_any_window(self):
        annotation = simulate("window", lines=SHAPE[0], samples=SHAPE[1])
        whole, _ = calibrated(annotation, "HH", "sigma0", "--subtract-noise")
        for name, (column, line, width, height) in (("HH", (33, 71, 150, 40)), ("X_HH_MAGNITUDE_1", (200, 149, 10, 1))):
            if name != "HH":
                whole, _ = calibrated(annotation, name, "sigma0", "--subtract-noise")
            run(GRIDKIT, "read", annotation, name, FOLDER / "part.img", "--overwrite", "--calibrate", "sigma0",
                "--subtract-noise", "--window", column, line, width, height)
            part = numpy.fromfile(FOLDER / "part.img", dtype=numpy.float32).reshape(height, width)
            numpy.testing.assert_array_equal(whole[line:line + height, column:column + width], part)


class Told(unittest.TestCase):
    def test_quantity_formula_noise_and_angles_stand_in_the_file(self):
        annotation = simulate("told", lines=80, samples=90)
        factor = Annotation(annotation).factor("HH")
        for name in ("HH", "X_HH_MAGNITUDE_1"):
            run(GRIDKIT, "read", annotation, name, FOLDER / "told.tif", "--overwrite", "--calibrate", "gamma0-db",
                "--subtract-noise")
            found = metadata(FOLDER / "told.tif")
            self.assertEqual("gamma0 = 10 * log10((calFactor * DN^2 - noise) * tan(incidence))", found["CALIBRATION"])
            self.assertEqual(factor, float(found["CALIBRATION_FACTOR"]))
            self.assertEqual("dB", found["CALIBRATION_UNIT"])
            self.assertEqual("subtracted: calFactor * polynomial of range time, 5 records, linear between two in azimuth "
                             "time", found["CALIBRATION_NOISE"])
            self.assertRegex(found["CALIBRATION_INCIDENCE"], r"^geolocation grid of \d+ x \d+ points, bilinear$")
        run(GRIDKIT, "read", annotation, "HH", FOLDER / "told.tif", "--overwrite", "--calibrate", "beta0")
        found = metadata(FOLDER / "told.tif")
        self.assertEqual("not subtracted", found["CALIBRATION_NOISE"])
        self.assertNotIn("CALIBRATION_INCIDENCE", found)

    def test_a_grid_that_is_not_taken_is_told(self):
        annotation = simulate("nogrid", lines=80, samples=90)
        (annotation.parent / "ANNOTATION/GEOREF.xml").unlink()
        said = run(GRIDKIT, "read", annotation, "HH", FOLDER / "nogrid.tif", "--calibrate", "sigma0").stderr.decode()
        self.assertIn("GEOREF.xml", said)
        self.assertEqual("sensor model, on the ellipsoid at 600 m",
                         metadata(FOLDER / "nogrid.tif")["CALIBRATION_INCIDENCE"])


class Angles(unittest.TestCase):
    def test_of_a_pixel_are_told(self):
        for with_grid in (True, False):
            annotation = simulate("angles", "--relief", 900, "--incidence", 41, lines=SHAPE[0], samples=SHAPE[1])
            told = Annotation(annotation)
            if not with_grid:
                (annotation.parent / "ANNOTATION/GEOREF.xml").unlink()
            wanted = numpy.degrees(told.grid_incidence() if with_grid else told.ellipsoid_incidence())
            for line, sample in ((0, 0), (77, 31), (149, 209)):
                found = json.loads(text(GRIDKIT, "locate", "--json", annotation, line, sample))["incidence"]
                self.assertAlmostEqual(wanted[line, sample], found, delta=2e-6)
                self.assertIn(f"  incidence {found:.4f}", text(GRIDKIT, "locate", annotation, line, sample))
            info = json.loads(text(GRIDKIT, "info", "--json", annotation))["incidence"]
            middle = (wanted[74] + wanted[75]) / 2
            self.assertAlmostEqual(middle[0], info["near"], delta=2e-6)
            self.assertAlmostEqual(middle[-1], info["far"], delta=2e-6)
            self.assertIn("grid" if with_grid else "sensor model", info["source"])
            self.assertIn(f"\n  incidence     {middle[0]:.2f} to {middle[-1]:.2f} degrees, near to far range",
                          text(GRIDKIT, "info", annotation))
        on_a_map = simulate("angles", "--variant", "EEC")
        self.assertIsNone(json.loads(text(GRIDKIT, "info", "--json", on_a_map))["incidence"])
        self.assertNotIn("near to far", text(GRIDKIT, "info", on_a_map))

    def test_of_a_place_are_those_at_its_height(self):
        annotation = simulate("height", lines=SHAPE[0], samples=SHAPE[1])
        (annotation.parent / "ANNOTATION/GEOREF.xml").unlink()
        angles = [json.loads(text(GRIDKIT, "locate", "--json", annotation, 70, 100, "--height", height))["incidence"]
                  for height in (600, 1600)]
        # In the triangle of the Earth's centre, the place and the satellite, a kilometre further up at the same
        # range the line of sight is flatter by 1 km / (range * sin(incidence)), 0.16 degrees at 640 km and 35 degrees.
        self.assertAlmostEqual(0.16, angles[1] - angles[0], delta=0.02)
        self.assertIsNone(json.loads(text(GRIDKIT, "locate", "--json", simulate("flat", "--variant", "GEC"), 7, 9))
                          ["incidence"])

    def test_are_drawn_across_the_swath(self):
        annotation = simulate("drawn", "--relief", 900, lines=SHAPE[0], samples=SHAPE[1])
        wanted = numpy.degrees(Annotation(annotation).grid_incidence())
        section = report(annotation).section("incidence")
        [figure] = section.all("figure", "plot")
        drawn = curves(figure)
        self.assertEqual(3, len(drawn))
        for curve, line in zip(drawn, (0, (SHAPE[0] - 1) // 2, SHAPE[0] - 1)):
            for sample, angle in curve:
                at = numpy.interp(sample, numpy.arange(SHAPE[1]), wanted[line])
                self.assertAlmostEqual(at, angle, delta=0.002)
        self.assertRegex(section.text(), r"From [\d.]+° in near range to [\d.]+° in far range, by the geolocation grid")
        section = report(simulate("drawnmap", "--variant", "GEC")).section("incidence")
        self.assertIn("the angles of incidence are not known", section.text())


class Pictures(unittest.TestCase):
    def picture(self, annotation, kind):
        output = FOLDER / "picture.png"
        run(GRIDKIT, "quicklook", annotation, output, "--size", 60, "--overwrite", "--calibrate", kind,
            "--subtract-noise")
        return Png(output.read_bytes())

    def test_are_means_of_the_pixels_between_what_black_and_white_are_told_to_be(self):
        annotation = with_real_noise(simulate("picture", lines=SHAPE[0], samples=SHAPE[1]))
        values, _ = calibrated(annotation, "X_HH_MAGNITUDE_1", "sigma0", "--subtract-noise")
        for kind in ("sigma0", "sigma0-db"):
            picture = self.picture(annotation, kind)
            shape = (picture.height, picture.width)
            cell = numpy.ix_(*(numpy.arange(n) * m // n for n, m in zip(SHAPE, shape)))
            sums, counts = numpy.zeros(shape), numpy.zeros(shape)
            numpy.add.at(sums, cell, values.astype(float))
            numpy.add.at(counts, cell, 1)
            mean = (sums / counts).clip(1e-9, None)
            found = re.fullmatch(r"(root of the mean sigma0|mean sigma0 in decibels), black at (\S+)(?: dB)? and white at "
                                 r"(\S+)(?: dB)?", picture.texts["Shows"])
            low, high = float(found.group(2)), float(found.group(3))
            shown = numpy.sqrt(mean) if kind == "sigma0" else 10 * numpy.log10(mean)
            wanted = ((shown - low) / (high - low) * 255).clip(0, 254) + 1
            colours = numpy.array([list(line) for line in picture.lines])
            # A colour is a whole number, and the texts round their four digits.
            self.assertLess(numpy.abs(wanted - colours - 0.5).max(), 1)
            self.assertGreater(len(set(colours.flat)), 100)
            self.assertIn("- noise) * sin(incidence)", picture.texts["CALIBRATION"])


class Refused(unittest.TestCase):
    def refusal(self, annotation, name, *options):
        said = complaint(GRIDKIT, "read", annotation, name, FOLDER / "no.tif", *options)
        self.assertFalse((FOLDER / "no.tif").exists())
        return said

    def test_where_nothing_tells_the_angles(self):
        annotation = simulate("map", "--variant", "GEC", lines=80, samples=90)
        for name in ("HH", "X_HH_MAGNITUDE_1"):
            self.assertIn("the angles of incidence are not known: it publishes no sensor model",
                          self.refusal(annotation, name, "--calibrate", "sigma0"))
        annotation = simulate("bursts", "--bursts", 2, lines=200, samples=90)
        self.assertIn("the image's lines and samples are not those that the product's sensor model places",
                      self.refusal(annotation, "HH_B2", "--calibrate", "gamma0"))

    def test_noise_of_an_unknown_scale(self):
        annotation = simulate("scale", lines=80, samples=90)
        annotation.write_text(annotation.read_text().replace("BETA NOUGHT", "SIGMA NOUGHT"))
        self.assertIn('the noise cannot be subtracted: /level1Product/noise/noiseLevelRef: "SIGMA NOUGHT" is no scale '
                      "that is known; BETA NOUGHT is",
                      self.refusal(annotation, "HH", "--calibrate", "beta0", "--subtract-noise"))
        run(GRIDKIT, "read", annotation, "HH", FOLDER / "scale.tif", "--calibrate", "beta0")

    def test_noise_of_pixels_that_stay_numbers_is_wrong_use(self):
        complaint(GRIDKIT, "read", "product", "layer", FOLDER / "no.tif", "--subtract-noise", status=2)


if __name__ == "__main__":
    main()
