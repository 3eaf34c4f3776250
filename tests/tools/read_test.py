"""`gridkit read` from the outside: the files that it writes, as other programs read them.

    read_test.py BUILD FOLDER
"""
import math
import os
import re
import struct
import subprocess
import unittest
from fractions import Fraction

from programs import FOLDER, GRIDKIT, complaint, main, run, simulate
from rasters import described, metadata, pixels

LINES, SAMPLES = 300, 260


def read(product, layer, output, *options):
    """Reads without a word; gives the output."""
    done = run(GRIDKIT, "read", product, layer, output, *options)
    assert (done.stdout, done.stderr) == (b"", b""), done.stderr
    return output


class Formats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("ssc")
        # All of the layer's pixels by way of raw blocks of 20, which divide the image.
        preferences = FOLDER / "preferences"
        preferences.write_text("import.default_block_size = 20\n")
        cls.expected = {}
        for layer, code in (("X_HH_MAGNITUDE_1", "H"), ("X_HH_PHASE_2", "h")):
            lines = [[0] * SAMPLES for _ in range(20)]
            for column in range(SAMPLES // 20):
                block = run(GRIDKIT, "--preferences", preferences, "read", "--raw", cls.product, layer,
                            "--block", 1, column).stdout
                values = struct.unpack(f"={400}{code}", block)
                for line in range(20):
                    lines[line][20 * column:20 * column + 20] = values[20 * line:20 * line + 20]
            cls.expected[layer] = [tuple(line) for line in lines]

    def test_every_format_holds_the_layers_own_values(self):
        for layer, kind in (("X_HH_MAGNITUDE_1", "UInt16"), ("X_HH_PHASE_2", "Int16")):
            for name, options in (("a.tif", ()), ("a.tiff", ()), ("a.TIF", ()), ("b.tif", ("-f", "COG")),
                                  ("c.img", ()), ("d", ("--format", "envi"))):
                with self.subTest(layer=layer, name=name):
                    output = read(self.product, layer, FOLDER / (layer + name), *options)
                    self.assertEqual(self.expected[layer], pixels(output, kind)[20:40])

    def test_a_png_holds_them_too_phases_with_half_a_turn_added(self):
        for layer, added in (("X_HH_MAGNITUDE_1", 0), ("X_HH_PHASE_2", 32768)):
            output = read(self.product, layer, FOLDER / (layer + ".png"))
            self.assertEqual([tuple(v + added for v in line) for line in self.expected[layer]],
                             pixels(output, "UInt16")[20:40])

    def test_a_window_is_that_part(self):
        for name in ("w.tif", "w.img", "w.png"):
            output = read(self.product, "X_HH_MAGNITUDE_1", FOLDER / name, "--window", 7, 21, 200, 15)
            self.assertEqual([line[7:207] for line in self.expected["X_HH_MAGNITUDE_1"][1:16]],
                             pixels(output, "UInt16"))
        self.assertEqual("7 21", metadata(FOLDER / "w.tif")["FIRST_COLUMN_AND_LINE"])

    def test_a_window_outside_the_image_is_refused(self):
        for window in ((0, 0, SAMPLES + 1, 5), (0, LINES, 5, 1), (-1, 0, 5, 5), (0, 0, 0, 5),
                       (2147483647, 0, 2147483647, 5)):
            message = complaint(GRIDKIT, "read", self.product, "X_HH_MAGNITUDE_1", FOLDER / "no.tif",
                                "--window", *window)
            column, line, width, height = window
            self.assertEqual(f"gridkit: {self.product}: the window {width} x {height} at column {column}, line {line} "
                             f"does not lie in the image of {SAMPLES} x {LINES}\n", message)
        self.assertFalse((FOLDER / "no.tif").exists())

    def test_the_file_tells_where_it_comes_from(self):
        for name, options in (("m.tif", ()), ("m_cog.tif", ("-f", "COG"))):
            output = read(self.product, "X_HH_PHASE_2", FOLDER / name, *options)
            told = metadata(output)
            self.assertEqual((str(self.product), "X_HH_PHASE_2"), (told["SOURCE"], told["LAYER"]))
            self.assertEqual("X_HH_PHASE_2", described(output)["bands"][0]["description"])

    def test_cogs_are_tiled_compressed_and_have_overviews(self):
        product = simulate("larger", lines=1100, samples=1300)
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "tiles.tif", "-f", "COG")
        info = described(output)
        self.assertEqual(("COG", "DEFLATE"), (info["metadata"]["IMAGE_STRUCTURE"]["LAYOUT"],
                                              info["metadata"]["IMAGE_STRUCTURE"]["COMPRESSION"]))
        [band] = info["bands"]
        self.assertEqual([512, 512], band["block"])
        self.assertEqual([[650, 550], [325, 275]], [o["size"] for o in band["overviews"]])

    def test_overviews_of_magnitudes_keep_the_mean_power(self):
        product = simulate("power", lines=1024, samples=1024)
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "power.tif", "-f", "COG")
        whole = [v for line in pixels(output, "UInt16") for v in line]
        half = FOLDER / "power_half.tif"
        subprocess.run(["gdal_translate", "-q", "-oo", "OVERVIEW_LEVEL=0", str(output), str(half)],
                       check=True)
        small = [v for line in pixels(half, "UInt16") for v in line]
        self.assertEqual(len(whole), 4 * len(small))
        mean = lambda values: sum(v * v for v in values) / len(values)
        self.assertAlmostEqual(1, mean(small) / mean(whole), delta=0.01)

    def test_an_ending_that_tells_no_format_is_wrong_use(self):
        for name in ("x.jpg", "x", "x.tif.gz"):
            message = complaint(GRIDKIT, "read", self.product, "X_HH_PHASE_2", FOLDER / name, status=2)
            self.assertIn("tells no format; give one with -f", message)
        message = complaint(GRIDKIT, "read", "a", "b", "c", "-f", "JPEG", status=2)
        self.assertIn('"JPEG" is none of GTiff, COG, PNG, ENVI', message)

    def test_a_header_tells_how_to_read_the_samples(self):
        output = read(self.product, "X_HH_PHASE_2", FOLDER / "h.img")
        header = (FOLDER / "h.img.hdr").read_text()
        self.assertTrue(header.startswith("ENVI\n"))
        for line in (f"samples = {SAMPLES}", f"lines = {LINES}", "bands = 1", "header offset = 0",
                     "data type = 2", "interleave = bsq", "byte order = 0",
                     "band names = {X_HH_PHASE_2}"):
            self.assertIn(f"\n{line}\n", header)
        self.assertEqual(2 * LINES * SAMPLES, output.stat().st_size)


class Stretch(unittest.TestCase):
    def test_pixels_for_the_eye_have_eight_bits(self):
        product = simulate("stretch", lines=64, samples=64)
        own = pixels(read(product, "X_HH_PHASE_2", FOLDER / "own.tif"), "Int16")
        eye = pixels(read(product, "X_HH_PHASE_2", FOLDER / "eye.png", "--stretch"), "Byte")
        self.assertEqual([tuple((v + 32768) // 256 for v in line) for line in own], eye)
        own = pixels(read(product, "X_HH_MAGNITUDE_1", FOLDER / "mag.tif"), "UInt16")
        eye = pixels(read(product, "X_HH_MAGNITUDE_1", FOLDER / "eye.tif", "--stretch"), "Byte")
        mean = sum(map(sum, own)) / 64 / 64
        for own_line, eye_line in zip(own, eye):
            for value, seen in zip(own_line, eye_line):
                self.assertAlmostEqual(min(255, 85 * value / mean), seen, delta=1)


def missing_lines(done):
    """The image's lines that a reading told to be without data, and those told to be out of reach."""
    result = []
    for reason in ("without data", "that cannot be reached"):
        told = re.search(f"lines of the image {reason}, in part or in whole: (.*)", done.stderr.decode())
        lines = []
        for part in told[1].split(", ") if told else ():
            first, _, last = part.partition("-")
            lines += range(int(first), int(last or first) + 1)
        result.append(lines)
    return result


class Existing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("existing", lines=64, samples=64)

    def test_an_output_is_replaced_only_when_asked(self):
        for name, options in (("old.tif", ()), ("old.png", ()), ("old.img", ()), ("oldc.tif", ("-f", "COG"))):
            output = FOLDER / name
            output.write_text("precious")
            self.assertEqual(f"gridkit: {output}: exists already; --overwrite replaces it\n",
                             complaint(GRIDKIT, "read", self.product, "X_HH_PHASE_2", output, *options))
            self.assertEqual("precious", output.read_text())
            read(self.product, "X_HH_PHASE_2", output, "--overwrite", *options)
            self.assertEqual([64, 64], described(output)["size"])

    def test_so_is_a_header_that_is_in_the_way(self):
        (FOLDER / "lone.img.hdr").write_text("precious")
        self.assertIn("lone.img.hdr: exists already", complaint(
            GRIDKIT, "read", self.product, "X_HH_PHASE_2", FOLDER / "lone.img"))
        self.assertFalse((FOLDER / "lone.img").exists())

    def test_the_products_own_files_are_never_replaced(self):
        detected = simulate("own", "--variant", "MGD", lines=64, samples=64)
        for product in (self.product, detected):
            image = next(f for f in (product.parent / "IMAGEDATA").iterdir())
            link = FOLDER / "link.tif"
            link.unlink(missing_ok=True)
            link.symlink_to(image)
            for output in (product, image, link):
                before = output.read_bytes()
                message = complaint(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output, "-f", "GTiff",
                                    "--overwrite")
                self.assertIn("is a file of the product itself", message)
                self.assertEqual(before, output.read_bytes())

    def test_standard_output_is_no_file_to_write(self):
        self.assertEqual("gridkit: /dev/stdout: cannot be written: it is no regular file\n", complaint(
            GRIDKIT, "read", self.product, "X_HH_PHASE_2", "/dev/stdout", "-f", "GTiff"))

    def test_a_link_stands_for_its_file(self):
        real, link = FOLDER / "real.tif", FOLDER / "alias.tif"
        real.write_text("old")
        link.symlink_to(real)
        read(self.product, "X_HH_PHASE_2", link, "--overwrite")
        self.assertTrue(link.is_symlink())
        self.assertEqual([64, 64], described(real)["size"])

    def test_what_is_no_regular_file_is_refused(self):
        for output, words in (("/dev/null", "it is no regular file"), (FOLDER, "it is a folder"),
                              ("/nonexistent/x", "there is no folder /nonexistent"),
                              (f"{self.product}/x", "a part of its path is no folder"),
                              (FOLDER / ("n" * 255), "the name is too long")):
            message = complaint(GRIDKIT, "read", self.product, "X_HH_PHASE_2", output, "-f", "GTiff",
                                "--overwrite")
            self.assertIn(f"{output}: cannot be written: {words}", message)
        self.assertTrue(os.path.exists("/dev/null") and not os.path.isfile("/dev/null"))


class Calibrated(unittest.TestCase):
    @staticmethod
    def factors(product):
        return [Fraction(text) for text in re.findall(r"<calFactor>([^<]+)<", product.read_text())]

    def test_brightness_is_the_factor_times_the_squared_number(self):
        for variant in ("SSC", "MGD"):
            product = simulate("beta" + variant, "--variant", variant, lines=100, samples=80)
            [factor] = self.factors(product)
            numbers = pixels(read(product, "X_HH_MAGNITUDE_1", FOLDER / f"{variant}.tif"), "UInt16")
            for name, options in ((f"{variant}b.tif", ()), (f"{variant}c.tif", ("-f", "COG")),
                                  (f"{variant}.img", ())):
                output = read(product, "X_HH_MAGNITUDE_1", FOLDER / name, "--calibrate", "beta0", *options)
                brightness = pixels(output, "Float32")
                for line, expected in zip(brightness, numbers):
                    for value, number in zip(line, expected):
                        # A double product, rounded once more to single: one part in 2^24, and a little.
                        self.assertAlmostEqual(value, factor * number**2, delta=6.1e-8 * value)

    def test_decibels_are_ten_times_its_logarithm(self):
        product = simulate("decibel", lines=100, samples=80)
        [factor] = self.factors(product)
        numbers = pixels(read(product, "X_HH_MAGNITUDE_1", FOLDER / "dn.tif"), "UInt16")
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "db.tif", "--calibrate", "beta0-db")
        for line, expected in zip(pixels(output, "Float32"), numbers):
            for value, number in zip(line, expected):
                if number > 0:
                    self.assertAlmostEqual(10 * math.log10(factor * number**2), value, delta=1e-5)

    def test_formula_factor_and_unit_stand_in_the_file(self):
        product = simulate("told", lines=64, samples=64)
        [factor] = self.factors(product)
        for kind, formula, unit in (("beta0", "beta0 = calFactor * DN^2", "1"),
                                    ("beta0-db", "beta0 = 10 * log10(calFactor * DN^2)", "dB")):
            for options in ((), ("-f", "COG")):
                output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "told.tif", "--calibrate", kind,
                              "--overwrite", *options)
                told = metadata(output)
                self.assertEqual(formula, told["CALIBRATION"])
                self.assertEqual(float(factor), float(told["CALIBRATION_FACTOR"]))
                self.assertTrue(told["CALIBRATION_UNIT"].startswith(unit))
                [band] = described(output)["bands"]
                self.assertEqual(("beta0", unit, "Float32"),
                                 (band["description"], band["unit"], band["type"]))
                self.assertEqual("NaN", band["noDataValue"])
            output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "told.img", "--calibrate", kind,
                          "--overwrite")
            header = (FOLDER / "told.img.hdr").read_text()
            self.assertIn(f"CALIBRATION: {formula},\n", header)
            self.assertIn("\ndata type = 4\n", header)

    def test_every_polarisation_has_its_own_factor(self):
        product = simulate("two", "--polarisations", "HH,VV", lines=64, samples=64)
        content = product.read_text()
        first, second = re.findall(r"<calFactor>[^<]+<", content)
        head, tail = content.rsplit(second, 1)
        product.write_text(head + "<calFactor>2.5E-05<" + tail)
        hh, vv = self.factors(product)
        self.assertNotEqual(hh, vv)
        for layer, factor in (("X_HH_MAGNITUDE_1", hh), ("X_VV_MAGNITUDE_3", vv)):
            output = read(product, layer, FOLDER / f"{layer}.tif", "--calibrate", "beta0")
            self.assertEqual(float(factor), float(metadata(output)["CALIBRATION_FACTOR"]))

    def test_phases_are_refused(self):
        product = simulate("phases", lines=64, samples=64)
        self.assertEqual(f"gridkit: {product}: X_HH_PHASE_2: holds phases, which have no brightness; calibrate a "
                         "magnitude layer\n",
                         complaint(GRIDKIT, "read", product, "X_HH_PHASE_2", FOLDER / "no.tif",
                                   "--calibrate", "beta0"))
        self.assertFalse((FOLDER / "no.tif").exists())

    def test_a_factor_that_is_not_positive_is_refused(self):
        product = simulate("zero", lines=64, samples=64)
        product.write_text(re.sub(r"<calFactor>[^<]+<", "<calFactor>0<", product.read_text()))
        self.assertIn("the calibration factor is not a positive number", complaint(
            GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", FOLDER / "no.tif", "--calibrate", "beta0"))

    def test_what_does_not_go_together_is_wrong_use(self):
        for options in (("x.png", "--calibrate", "beta0"), ("x.tif", "--calibrate", "sigma"),
                        ("x.tif", "--calibrate", "beta0", "--stretch")):
            complaint(GRIDKIT, "read", "product", "layer", *options, status=2)


class NoData(unittest.TestCase):
    def test_zeros_around_a_mapped_scene_are_no_data(self):
        product = simulate("map", "--variant", "GEC", lines=100, samples=80)
        image = next((product.parent / "IMAGEDATA").glob("*.tif"))
        # The image's first 40 samples become 0: they stand wherever its first line does.
        line = pixels(image, "UInt16")[0]
        content = image.read_bytes()
        row = struct.pack("<80H", *line)
        self.assertEqual(1, content.count(row))
        image.write_bytes(content.replace(row, bytes(80) + row[80:]))
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "map.tif")
        self.assertEqual(0, described(output)["bands"][0]["noDataValue"])
        for kind in ("beta0", "beta0-db"):
            output = read(product, "X_HH_MAGNITUDE_1", FOLDER / f"map_{kind}.tif", "--calibrate", kind)
            seen = pixels(output, "Float32")[0]
            self.assertTrue(all(map(math.isnan, seen[:40])))
            self.assertFalse(any(map(math.isnan, seen[40:])))

    def test_in_radar_geometry_0_is_a_measurement(self):
        product = simulate("zeros", "--empty-images", lines=100, samples=80)
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "zeros.tif")
        self.assertNotIn("noDataValue", described(output)["bands"][0])
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "zeros_b.tif", "--calibrate", "beta0")
        self.assertEqual({0.0}, {v for line in pixels(output, "Float32") for v in line})
        output = read(product, "X_HH_MAGNITUDE_1", FOLDER / "zeros_d.tif", "--calibrate", "beta0-db")
        self.assertTrue(all(math.isnan(v) for line in pixels(output, "Float32") for v in line),
                        "0 has no logarithm")

    def test_no_block_size_loses_a_line(self):
        product = simulate("prime", lines=293)  # a prime: no grid of blocks ends where the image does
        image = next((product.parent / "IMAGEDATA").iterdir()).read_bytes()
        output = FOLDER / "prime.tif"
        self.assertEqual("", run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output).stderr.decode())
        last = struct.unpack_from(f">{2 * SAMPLES}h", image, 4 * ((4 + 292) * (2 + SAMPLES) + 2))
        self.assertLess(max(map(abs, last)), 1000, "beyond, roots in 32 bits may differ from these")
        self.assertEqual(tuple(math.floor(math.hypot(*last[2 * s:2 * s + 2])) for s in range(SAMPLES)),
                         pixels(output, "UInt16")[292])

    def test_lines_without_data_are_told_and_marked(self):
        product = simulate("gap", lines=293)
        image = next((product.parent / "IMAGEDATA").iterdir())
        held = 100  # samples of the last line
        os.truncate(image, 4 * ((4 + 292) * (2 + SAMPLES) + 2 + held))
        warning = "gridkit: warning: {}: lines of the image without data, in part or in whole: 292\n"
        for name, kind in (("gap.tif", "UInt16"), ("gapc.tif", "UInt16"), ("gap.img", "UInt16")):
            output = FOLDER / name
            options = ("-f", "COG") if name == "gapc.tif" else ()
            done = run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output, *options)
            self.assertTrue(done.stderr.decode().endswith(warning.format(output)), done.stderr)
            self.assertEqual(0, described(output)["bands"][0]["noDataValue"])
            if not name.endswith(".img"):
                self.assertEqual("292", metadata(output)["LINES_WITHOUT_DATA"])
        numbers = pixels(FOLDER / "gap.tif", "UInt16")
        output = FOLDER / "gap_b.tif"
        run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output, "--calibrate", "beta0")
        brightness = pixels(output, "Float32")
        self.assertEqual({0}, {*numbers[292][held:]})
        for column, value in enumerate(brightness[292]):
            self.assertEqual(column >= held or numbers[292][column] == 0, math.isnan(value), column)
        for line in brightness[:292]:
            self.assertFalse(any(map(math.isnan, line)))


class CutImage(unittest.TestCase):
    """An image file that ends early: blocks have 64 lines, the annotation promises 300."""

    def test_every_line_that_the_file_holds_is_read(self):
        whole = simulate("whole")
        expected = {layer: pixels(read(whole, layer, FOLDER / f"{layer}_whole.tif"), kind)
                    for layer, kind in (("X_HH_MAGNITUDE_1", "UInt16"), ("X_HH_PHASE_2", "Int16"))}
        for place, lines, columns in (("at the end of a line", 149, 0), ("in the middle of a line", 149, 130),
                                      ("before a line's last sample", 149, SAMPLES - 1),
                                      ("a line before a block's end", 127, 0), ("at a block's end", 128, 0),
                                      ("in the first block", 11, 0), ("in its first line", 0, 40),
                                      ("in the last block", 280, 0)):
            product = simulate("cut")
            image = next((product.parent / "IMAGEDATA").iterdir())
            # Four lines of annotation, then lines of two values and the samples, 4 bytes each.
            os.truncate(image, 4 * ((4 + lines) * (2 + SAMPLES) + (2 + columns if columns else 0)))
            for layer, kind in (("X_HH_MAGNITUDE_1", "UInt16"), ("X_HH_PHASE_2", "Int16")):
                with self.subTest(place=place, layer=layer):
                    output = FOLDER / "cut.tif"
                    done = run(GRIDKIT, "read", product, layer, output, "--overwrite")
                    self.assertEqual([*range(lines, 300)], sorted(sum(missing_lines(done), [])))
                    without_data, _ = missing_lines(done)
                    self.assertEqual(299, without_data[-1])
                    seen = pixels(output, kind)
                    self.assertEqual(expected[layer][:lines], seen[:lines])
                    self.assertEqual(expected[layer][lines][:columns], seen[lines][:columns])
                    self.assertEqual({0}, {*seen[lines][columns:]}.union(*seen[lines + 1:]))

    def test_so_is_every_line_of_a_window(self):
        product = simulate("cut_window")
        whole = pixels(read(product, "X_HH_MAGNITUDE_1", FOLDER / "window_whole.tif"), "UInt16")
        image = next((product.parent / "IMAGEDATA").iterdir())
        os.truncate(image, 4 * ((4 + 149) * (2 + SAMPLES) + 2 + 130))
        for window, missing in (((7, 70, 100, 90), "150-159"), ((100, 140, 60, 20), "149-159")):
            output = FOLDER / "cut_window.tif"
            done = run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output, "--overwrite", "--window", *window)
            self.assertTrue(done.stderr.decode().endswith(f"without data, in part or in whole: {missing}\n"),
                            done.stderr)
            left, top, width, _ = window
            held = int(missing.split("-")[0]) - top
            self.assertEqual([line[left:left + width] for line in whole[top:top + held]],
                             pixels(output, "UInt16")[:held])


if __name__ == "__main__":
    main()
