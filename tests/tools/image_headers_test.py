"""What COSAR and GeoTIFF files say of themselves against their annotation.

    image_headers_test.py BUILD FOLDER
"""
import json
import math
import re
import shutil
import struct
import subprocess
import sys
import unittest

from image_files import (COSAR_BYTES, LINES, RECORD, SAMPLES, SPACING_TAG, TIE_POINT_TAG, Tiff, change_system,
                         findings, image_of, widened, with_words, without_sizes)
from programs import ANNOTATION, FOLDER, GRIDKIT, complaint, run, simulate


class Cosar(unittest.TestCase):
    def setUp(self):
        self.product = simulate("cosar")
        self.image = image_of(self.product, ".cos")
        self.good = self.image.read_bytes()
        without_sizes(self.product)

    def found_in(self, cosar, status=1):
        self.image.write_bytes(cosar)
        return findings(self.product, status)

    def test_wider_records_are_told(self):
        self.assertEqual([("record width", f"{RECORD + 16} bytes",
                           f"{RECORD} bytes, for {SAMPLES} samples a line", "annotation", True)],
                         self.found_in(widened(self.good, 16)))

    def test_another_count_of_samples_is_told(self):
        # Records keep their width: four bytes of each are no sample any more.
        self.assertEqual([("samples a line", f"{SAMPLES - 1}", f"{SAMPLES}", "annotation", True)],
                         self.found_in(with_words(self.good, RANGE_SAMPLES=SAMPLES - 1)))

    def test_another_count_of_lines_is_told(self):
        fewer = with_words(self.good[:-5 * RECORD], BYTES=COSAR_BYTES - 5 * RECORD, RECORDS=LINES - 1,
                           AZIMUTH_LINES=LINES - 5)
        self.assertEqual([("lines", f"{LINES - 5}", f"{LINES}", "annotation", True)], self.found_in(fewer))

    def test_several_bursts_are_told_with_their_lines(self):
        lines = 100
        second = with_words(self.good[:(lines + 4) * RECORD], BYTES=(lines + 4) * RECORD, RECORDS=lines + 4,
                            AZIMUTH_LINES=lines, BURST=2)
        self.assertEqual([("bursts", "2, of 300 and 100 lines", "1, of 300 lines", "annotation", True)],
                         self.found_in(self.good + second))
        self.assertEqual([("bursts", "3, of 100, 100 and 300 lines", "1, of 300 lines", "annotation", True)],
                         self.found_in(second + second + self.good))

    def test_samples_of_another_type_are_told(self):
        for version, shown in ((2, "half-precision floats, version 2 of the format"),
                               (3, "version 3 of the format"), (0, "version 0 of the format")):
            self.assertEqual([("sample type", shown, "16-bit integers, version 1", "format", True)],
                             self.found_in(with_words(self.good, VERSION=version)))

    def test_each_burst_of_another_sample_type_is_told(self):
        found = self.found_in(self.good + with_words(self.good, VERSION=2, BURST=2))
        self.assertEqual(["sample type of burst 2", "bursts"], [f[0] for f in found])

    def test_many_bursts_are_counted_to_a_bound(self):
        # Bursts of one record that holds nothing but its annotation's beginning.
        burst = with_words(self.good[:48], BYTES=48, RANGE_SAMPLES=10, AZIMUTH_LINES=0, RECORD_BYTES=48,
                           RECORDS=1)
        found = self.found_in(burst * 10007)
        [bursts] = [f for f in found if f[0] == "bursts"]
        self.assertEqual("10000, of 0, 0, 0, 0, 0, 0, 0, 0, ... lines", bursts[1])
        self.assertIn(("bytes behind the last burst", str(7 * 48), "none", "header", False), found)

    def test_a_wrong_mark_is_told(self):
        for mark, shown in ((b"CSAX", '"CSAX"'), (b"\0\1\xff ", '"\\x00\\x01\\xff "')):
            self.assertEqual([("format mark", shown, '"CSAR" at byte 28', "format", True)],
                             self.found_in(self.good[:28] + mark + self.good[32:]))

    def test_a_file_shorter_than_a_header_is_told(self):
        for length, shown in ((20, "none"), (30, '"CS"'), (47, '"CSAR"')):
            self.assertEqual([("format mark", shown, '"CSAR" at byte 28', "format", True)],
                             self.found_in(self.good[:length]))

    def test_a_file_cut_off_is_told(self):
        for length in (48, COSAR_BYTES // 2, COSAR_BYTES - 1):
            self.assertEqual([("file length", f"{length} bytes", f"{COSAR_BYTES} bytes", "header", True)],
                             self.found_in(self.good[:length]))

    def test_a_short_file_is_told_by_header_and_size(self):
        self.product.write_text(self.product.read_text().replace(
            "<size>-1</size>", f"<size>{COSAR_BYTES}</size>"))
        self.assertEqual(["file length", "size"], [f[0] for f in self.found_in(self.good[:-1])])

    def test_bytes_behind_the_image_are_a_warning(self):
        self.image.write_bytes(self.good + b"1234567")
        done = run(ANNOTATION, "check", "--images", self.product)
        self.assertEqual(f"tsx-annotation: warning: {self.image}: bytes behind the last burst: found 7, the "
                         "file's own header says none\n", done.stderr.decode())

    def test_a_header_at_odds_with_itself_is_told(self):
        self.assertEqual([("byte count", "5 bytes", f"{LINES + 4} records of {RECORD} bytes, whose count ends "
                           f"in these 32 bits: {COSAR_BYTES}", "header", False)],
                         self.found_in(with_words(self.good, BYTES=5), status=0))
        longer = RECORD * (LINES + 5)
        self.assertEqual([("records", f"{LINES + 5}", f"{LINES} lines, which with their annotation take "
                           f"{LINES + 4}", "header", True),
                          ("file length", f"{COSAR_BYTES} bytes", f"{longer} bytes", "header", True)],
                         self.found_in(with_words(self.good, RECORDS=LINES + 5, BYTES=longer)))
        narrow = self.found_in(with_words(self.good, RECORD_BYTES=RECORD - 4))
        self.assertEqual(("record width", f"{RECORD - 4} bytes",
                          f"{SAMPLES} samples a line, which take {RECORD} bytes", "header", True), narrow[1])

    def test_numbers_without_bounds_end_at_once(self):
        most = 0xffffffff
        found = self.found_in(with_words(self.good, BYTES=most, RANGE_SAMPLES=most, AZIMUTH_LINES=most,
                                         RECORD_BYTES=most, RECORDS=most))
        self.assertIn(("file length", f"{COSAR_BYTES} bytes", f"{most * most} bytes", "header", True), found)
        nothing = self.found_in(with_words(self.good, RECORD_BYTES=0, RECORDS=0))
        self.assertIn(("record width", "0 bytes", f"{RECORD} bytes, for {SAMPLES} samples a line",
                       "annotation", True), nothing)


class HalfFloats(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("halves", "--sample-type", "half")
        cls.image = image_of(cls.product, ".cos")
        cls.words = (f"{cls.image}: sample type: found half-precision floats, version 2 of the format, the "
                     "format says 16-bit integers, version 1")

    def test_the_check_refuses_them(self):
        self.assertEqual(f"tsx-annotation: {self.words}\n",
                         run(ANNOTATION, "check", "--images", self.product, status=1).stderr.decode())

    def test_info_warns_of_them(self):
        done = run(GRIDKIT, "info", self.product)
        self.assertEqual(f"gridkit: warning: {self.words}; see `tsx-annotation check --images`\n",
                         done.stderr.decode())

    def test_pixels_are_refused_before_a_file_is_written(self):
        for command, output in ((("read", self.product, "X_HH_MAGNITUDE_1"), "halves.tif"),
                                (("quicklook", self.product), "halves.png"),
                                (("report", self.product), "halves.html")):
            self.assertEqual(f"gridkit: {self.words}; every pixel of its layers would be wrong\n",
                             complaint(GRIDKIT, *command, FOLDER / output))
            self.assertFalse((FOLDER / output).exists())

    def test_blocks_come_as_the_plug_in_takes_them(self):
        # A block of 16-bit magnitudes of what the bits say as integers.
        done = run(GRIDKIT, "read", "--raw", self.product, "X_HH_MAGNITUDE_1", "--block", 1, 1)
        self.assertEqual(f"gridkit: warning: {self.words}; see `tsx-annotation check --images`\n",
                         done.stderr.decode())
        block = struct.unpack("=4096H", done.stdout)
        cosar = self.image.read_bytes()
        for line in (0, 17, 63):
            for sample in (0, 40, 63):
                at = (64 + line + 4) * RECORD + (64 + sample + 2) * 4
                i, q = struct.unpack(">hh", cosar[at:at + 4])
                self.assertEqual(math.isqrt(i * i + q * q), block[line * 64 + sample])


class GeoTiff(unittest.TestCase):
    def setUp(self):
        self.product = simulate("tiff", "--variant", "GEC")
        self.image = image_of(self.product, ".tif")
        without_sizes(self.product)
        self.map = json.loads((self.product.parent / "truth.json").read_text())["map"]

    def replace_by_read(self, *options):
        """The image is written anew by `gridkit read`."""
        output = FOLDER / "replacement.tif"
        run(GRIDKIT, "read", "--overwrite", *options, output)
        shutil.copy(output, self.image)

    def test_an_image_of_another_size_is_told(self):
        other = simulate("smaller", "--variant", "GEC", lines=LINES - 10, samples=SAMPLES - 20)
        shutil.copy(image_of(other, ".tif"), self.image)
        self.assertIn(("image size", "240 x 290 pixels", "260 x 300 pixels", "annotation", True),
                      findings(self.product))

    def test_eight_bits_are_told(self):
        self.replace_by_read("--stretch", self.product, "X_HH_MAGNITUDE_1")
        self.assertIn(("bit depth", "8 bits", "16 bits", "annotation", True), findings(self.product))

    def test_signed_samples_are_told(self):
        ssc = simulate("signed")
        self.replace_by_read(ssc, "X_HH_PHASE_2")
        self.assertIn(("bit depth", "16 bits, signed", "16 bits", "annotation", True), findings(self.product))

    def test_an_image_without_a_map_is_told(self):
        bare = FOLDER / "bare.tif"
        subprocess.run(["gdal_translate", "-q", "-co", "PROFILE=BASELINE", self.image, bare], check=True)
        shutil.copy(bare, self.image)
        [(what, found, expected, authority, serious)] = findings(self.product)
        self.assertEqual(("map", "UTM zone 32 N, WGS84", "annotation", True),
                         (what, expected, authority, serious))
        self.assertTrue(found.startswith("none ("), found)

    def test_another_zone_hemisphere_datum_or_projection_is_told(self):
        # 32633 and 32732 are UTM zones of WGS 84, 25832 is zone 32 of ETRS89, 3857 is no UTM.
        for code, system in ((32633, "UTM zone 33 N, WGS84"), (32732, "UTM zone 32 S, WGS84"),
                             (25832, "UTM zone 32 N, ETRS89"), (32661, "UPS N, WGS84")):
            change_system(Tiff(self.image), code)
            self.assertEqual([("map projection", system, "UTM zone 32 N, WGS84", "annotation", True)],
                             findings(self.product))
        change_system(Tiff(self.image), 3857)
        [finding] = findings(self.product)
        self.assertEqual("map projection", finding[0])

    def test_another_upper_left_corner_is_told(self):
        x, y = self.map["upperLeftEasting"], self.map["upperLeftNorthing"]
        tie = Tiff(self.image).values(TIE_POINT_TAG)
        spacing = self.map["spacing"]
        for east, north in ((1, 0), (0, -1), (-3, 2)):
            moved = tie[:3] + [tie[3] + east * spacing, tie[4] + north * spacing, tie[5]]
            Tiff(self.image).change(TIE_POINT_TAG, moved)
            serious = [f for f in findings(self.product) if f[0] == "upper left pixel"]
            self.assertEqual([("upper left pixel", f"{x + east * spacing:.3f}, {y + north * spacing:.3f} m",
                               f"{x:.3f}, {y:.3f} m", "annotation", True)], serious)

    def test_corners_may_be_outer_corners_and_half_a_pixel_else_is_a_warning(self):
        tie = Tiff(self.image).values(TIE_POINT_TAG)
        half = self.map["spacing"] / 2
        # The annotation has pixel centres. Moved east and south, its first corner is the first pixel's outer
        # one, but its last is the last pixel's inner one.
        Tiff(self.image).change(TIE_POINT_TAG, tie[:3] + [tie[3] + half, tie[4] - half, tie[5]])
        self.assertEqual([("lower right pixel", False)],
                         [(f[0], f[4]) for f in findings(self.product, status=0)])
        Tiff(self.image).change(TIE_POINT_TAG, tie[:3] + [tie[3] - half, tie[4] - half, tie[5]])
        self.assertEqual([("upper left pixel", False), ("lower right pixel", False)],
                         [(f[0], f[4]) for f in findings(self.product, status=0)])

    def test_another_spacing_is_told(self):
        spacing = self.map["spacing"]
        Tiff(self.image).change(SPACING_TAG, [spacing, spacing + 0.001, 0])
        found = findings(self.product)
        self.assertIn(("pixel spacing", "2.5 x 2.501 m", "2.5 x 2.5 m", "annotation", True), found)

    def test_a_file_cut_off_is_told(self):
        whole = self.image.read_bytes()
        self.image.write_bytes(whole[:-2 * SAMPLES])
        [(what, found, expected, authority, serious)] = findings(self.product)
        self.assertEqual(("file length", f"{len(whole) - 2 * SAMPLES} bytes", "header", True),
                         (what, found, authority, serious))
        self.assertRegex(expected, r"^\d+ bytes or more$")
        self.assertLessEqual(int(expected.split()[0]), len(whole))

    def test_what_is_no_geotiff_is_told(self):
        for content in (b"II*\0", b"no image at all", self.image.read_bytes()[:100]):
            self.image.write_bytes(content)
            [(what, found, expected, authority, serious)] = findings(self.product)
            self.assertEqual(("file", f"a GeoTIFF image of {SAMPLES} x {LINES}", "annotation", True),
                             (what, expected, authority, serious))
            self.assertTrue(found.startswith("no readable GeoTIFF ("), found)

    def test_another_file_size_is_a_warning(self):
        bytes_of_file = self.image.stat().st_size
        content = self.product.read_text()
        place = content.index("<size>", content.index("<imageData"))
        self.product.write_text(content[:place] + content[place:].replace("<size>-1<", "<size>5<", 1))
        self.assertEqual([("size", f"{bytes_of_file} bytes", "5 bytes", "annotation", False)],
                         findings(self.product, status=0))

    def test_a_zone_that_cannot_be_read_is_a_warning(self):
        self.product.write_text(re.sub("<zoneID>.*</zoneID>", "<zoneID>x</zoneID>", self.product.read_text()))
        self.assertEqual([("map projection", "UTM zone 32 N, WGS84",
                           '"UTM" zone "x", which cannot be compared', "annotation", False)],
                         findings(self.product, status=0))


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
