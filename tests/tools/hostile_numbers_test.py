"""Hostile numbers and sizes through the command line, as a user would open them.

    hostile_numbers_test.py BUILD FOLDER ROOT
"""
import os
import sys
import unittest
import unittest.mock
from pathlib import Path

import hostile_files
from hostile_files import (OPTIMISED, SECONDS, attempt, copies, image_of, live, product, rows_of_schema, spoiled,
                           with_value)
from programs import ANNOTATION, FOLDER, GRIDKIT, simulate

ROOT = Path(sys.argv[3])
NUMBERS = ["0", "1", "-1", "5", "256", "2147483647", "-2147483648", "2147483648", "4294967295", "4294967296",
           "4294967297", "9223372036854775807", "9223372036854775808", "18446744073709551616",
           "9" * 1000, "text", "", " 7 ", "0x10", "1e3", "NaN", "\uff11"]
DOUBLES = ["0", "-1", "1e308", "-1e308", "1e-320", "1e999", "NaN", "INF", "-INF", "text"]


class Numbers(unittest.TestCase):
    """Numbers that the plug-in and the host compute with."""

    def check(self, annotation, element, values, before=""):
        """Lives with every value in the element; gives what each was refused with."""
        text = annotation.read_text()
        at = text.index(before)
        files = copies(annotation, [text[:at] + with_value(text[at:], element, v) for v in values])
        refusals = dict(zip(values, live(files)))
        for value, refusal in refusals.items():
            with self.subTest(element=element, value=value[:30]):
                self.assertTrue(refusal == "" or len(refusal) > 30, refusal)
        return refusals

    def test_counts_and_sizes(self):
        for variant in ("SSC", "MGD", "GEC"):
            annotation = product("counts", variant)
            for element in ("numberOfLayers", "numberOfRows", "numberOfColumns", "numStateVectors"):
                self.check(annotation, element, NUMBERS)

    def test_the_degree_of_the_polynomial(self):
        self.check(product("degree", "MGD"), "polynomialDegree", NUMBERS, "<slantToGroundRangeProjection>")

    def test_physical_values(self):
        for variant in ("SSC", "MGD"):
            annotation = product("physical", variant)
            for element in ("calFactor", "centerFrequency", "slantRange", "projectedSpacingAzimuth", "RSF",
                            "firstPixel", "sceneAverageHeight", "stateVectorTimeSpacing", "posX", "velZ",
                            "columnSpacing", "rowSpacing"):
                self.check(annotation, element, DOUBLES)

    def test_layers_beyond_the_images(self):
        annotation = product("layers")
        for count in ("2", "4", "5"):
            file = spoiled(annotation, "TSX1_layers.xml", with_value(annotation.read_text(), "numberOfLayers", count))
            ended = attempt(GRIDKIT, "info", file)
            self.assertEqual(1, ended.status)
            self.assertIn(f"numberOfLayers is {count}, but productComponents names 1 image file",
                          ended.message)

    def test_state_vectors_beyond_a_day(self):
        refusals = self.check(product("vectors"), "numStateVectors", ("100000", "100001"))
        self.assertEqual("", refusals["100000"])
        self.assertIn("numStateVectors must be 0 to 100000 state vectors in its low 32 bits", refusals["100001"])

    def test_every_integer_of_the_schema(self):
        """By binding alone: whatever stands in an integer, the fault tells line and element."""
        text = simulate("maximal", "--profile", "maximal", lines=64, samples=64).read_text()
        names = sorted({cells[1] for cells in rows_of_schema(ROOT) if "int" in cells[3] and cells[2] == "element"})
        present = [n for n in names if f"<{n}>" in text]
        self.assertGreater(len(present), 50)
        folder = FOLDER / "integers"
        folder.mkdir(exist_ok=True)
        for value in ("-1", "4294967296", "18446744073709551616", "text", ""):
            files = []
            for name in present:
                files.append(folder / f"{name}.xml")
                files[-1].write_text(with_value(text, name, value))
            hostile_files.tried += len(files)
            ended = attempt(ANNOTATION, "check", *files, counts=False, seconds=3 * SECONDS, messages=len(files))
            faults = ended.message.splitlines()
            if value in ("text", "", "18446744073709551616"):
                self.assertEqual(1, ended.status)
            for line in faults:
                self.assertRegex(line, r"^tsx-annotation: .*\.xml:\d+:\d+: /level1Product/")


class Sizes(unittest.TestCase):
    """Rows and columns against what the image file holds."""

    def test_complex_images(self):
        annotation = product("sizes", lines=300, samples=260)
        text = annotation.read_text()
        # An image of one line has no time from line to line, so its pixels have no place on Earth.
        unplaced = "the sensor model gives its lines no times"
        sizes = ((299, 260), (301, 260), (1000, 260), (300, 259), (300, 261), (300, 5000), (1, 1), (100000, 1),
                 (1, 100000), (1000000, 260))
        files = copies(annotation, [with_value(with_value(text, "numberOfRows", str(rows)), "numberOfColumns",
                                               str(columns)) for rows, columns in sizes])
        for (rows, columns), refusal in zip(sizes, live(files)):
            with self.subTest(rows=rows, columns=columns):
                self.assertTrue(refusal.startswith(unplaced) if rows == 1 else refusal == "", refusal)

    def test_lines_past_the_end_are_told(self):
        annotation = product("past", lines=300, samples=260)
        file = spoiled(annotation, "TSX1_past.xml", with_value(annotation.read_text(), "numberOfRows", "1000"))
        ended = attempt(GRIDKIT, "read", file, "X_HH_MAGNITUDE_1", FOLDER / "past.tif")
        self.assertIn("lines of the image without data, in part or in whole: ", ended.message)
        self.assertIn("-999\n", ended.message)

    def test_images_too_large_to_read_are_told(self):
        annotation = product("large", lines=300, samples=260)
        for rows, words in (("2147483647", "the window 260 x 2147483647 is too large to be read at once; "
                                           "read it in smaller windows"),
                            ("16000000", "the image should have 16000000 lines but its data end about line ")):
            file = spoiled(annotation, "TSX1_large.xml", with_value(annotation.read_text(), "numberOfRows", rows))
            ended = attempt(GRIDKIT, "read", file, "X_HH_MAGNITUDE_1", FOLDER / "large.tif")
            self.assertEqual(1, ended.status)
            self.assertIn(words, ended.message)
            self.assertEqual([], list(FOLDER.glob("large.tif*")))
            part = attempt(GRIDKIT, "read", file, "X_HH_MAGNITUDE_1", FOLDER / "large.tif", "--window", 0, 0, 260, 64,
                           counts=False)
            self.assertEqual(0, part.status)
            (FOLDER / "large.tif").unlink()

    def test_rows_of_blocks_too_large_to_hold_are_told(self):
        annotation = product("wide", lines=64, samples=260)
        text = annotation.read_text()
        file = spoiled(annotation, "TSX1_wide.xml", with_value(text, "numberOfColumns", "10000000"))
        ended = attempt(GRIDKIT, "read", file, "X_HH_MAGNITUDE_1", FOLDER / "wide.tif")
        self.assertIn("the window 10000000 x 64 is too large to be read at once; read it in smaller windows",
                      ended.message)
        preferences = FOLDER / "large blocks"
        preferences.write_text("import.default_block_size = 100000\n")
        ended = attempt(GRIDKIT, "--preferences", preferences, "read", "--raw", annotation, "X_HH_MAGNITUDE_1",
                        "--block", 0, 0)
        self.assertIn("blocks of 100000 x 100000 pixels are too large; see import.default_block_size", ended.message)

    @unittest.skipUnless(OPTIMISED, "takes minutes, and a sanitizer's memory is not the program's")
    def test_large_images_are_gone_through_in_little_memory(self):
        for variant, megabytes in (("SSC", 128), ("MGD", 256)):
            annotation = simulate("huge", "--variant", variant, "--empty-images", lines=20000, samples=20000)
            # Of 800 MB; a part of it is read, because it is written again.
            for command in (("quicklook", annotation, "X_HH_MAGNITUDE_1", FOLDER / "huge.png"),
                            ("report", annotation, FOLDER / "huge.html"),
                            ("read", annotation, "X_HH_MAGNITUDE_1", FOLDER / "huge.tif", "--window", 0, 0, 20000, 8000)):
                with self.subTest(variant=variant, command=command[0]):
                    ended = attempt(GRIDKIT, *command, "--quiet", "--overwrite", megabytes=megabytes, counts=False)
                    self.assertEqual((0, ""), (ended.status, ended.message))
        with unittest.mock.patch.dict(os.environ, GDAL_CACHEMAX="16"):
            attempt(GRIDKIT, "quicklook", annotation, FOLDER / "huge.png", "--quiet", "--overwrite", megabytes=100,
                    statuses=(0,), counts=False)

    def test_image_files_of_any_length(self):
        for variant in ("SSC", "MGD", "EEC"):
            annotation = product("lengths" + variant, variant)
            image = image_of(annotation)
            whole = image.read_bytes()
            for size in (0, 1, 7, 8, 100, len(whole) // 2, len(whole) - 1, len(whole) + 1):
                image.write_bytes((whole + b"\0")[:size])
                [refusal] = live([annotation])
                with self.subTest(variant=variant, size=size):
                    self.assertEqual(variant == "SSC" or size >= len(whole), refusal == "", refusal)
            for content in (b"\xff" * len(whole), b"\0" * len(whole), whole[::-1]):
                image.write_bytes(content)
                self.assertEqual(variant == "SSC", live([annotation]) == [""])


if __name__ == "__main__":
    hostile_files.main()
