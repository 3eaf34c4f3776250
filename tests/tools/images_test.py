"""Image files against their annotation: `tsx-annotation check --images`, and the warnings of `gridkit`.

    images_test.py BUILD FOLDER
"""
import json
import os
import re
import shutil
import struct
import sys
import unittest

from programs import ANNOTATION, FOLDER, GRIDKIT, SIMULATE, real_annotations, run, simulate, text

LINES, SAMPLES = 300, 260
RECORD = 4 * (SAMPLES + 2)
COSAR_BYTES = RECORD * (LINES + 4)

# Words of a burst's first record, by their place.
BYTES, RANGE_SAMPLES, AZIMUTH_LINES, BURST, RECORD_BYTES, RECORDS = 0, 2, 3, 4, 5, 6


def image_of(annotation, ending):
    return next((annotation.parent / "IMAGEDATA").glob("*" + ending))


def with_words(cosar, **words):
    """A COSAR file's bytes with other words in its first record."""
    changed = bytearray(cosar)
    for name, value in words.items():
        struct.pack_into(">I", changed, 4 * globals()[name], value)
    return bytes(changed)


def widened(cosar, more):
    """The same samples in records that are `more` bytes longer, as a whole and sound file."""
    records = [cosar[at:at + RECORD] + bytes(more) for at in range(0, len(cosar), RECORD)]
    wide = b"".join(records)
    return with_words(wide, BYTES=len(wide), RECORD_BYTES=RECORD + more)


def without_sizes(annotation):
    """Leaves all sizes open, so that what a test changes is the one thing that differs."""
    annotation.write_text(re.sub(r"<size>\d+</size>", "<size>-1</size>", annotation.read_text()))


def findings(annotation, status=1):
    """(what, found, expected, authority, serious) of each finding."""
    done = run(ANNOTATION, "check", "--images", "--json", annotation, status=status)
    [result] = json.loads(done.stdout)
    return [(f["what"], f["found"], f["expected"], f["authority"], f["serious"])
            for f in result["findings"]]


class Tiff:
    """A little-endian classic TIFF, whose tags can be changed in place."""
    SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 12: 8}
    CODES = {3: "H", 4: "I", 12: "d"}

    def __init__(self, path):
        self.path, self.data = path, bytearray(path.read_bytes())
        assert self.data[:4] == b"II*\0"
        self.tags = {}
        [start] = struct.unpack_from("<I", self.data, 4)
        [count] = struct.unpack_from("<H", self.data, start)
        for at in range(start + 2, start + 2 + 12 * count, 12):
            tag, kind, values = struct.unpack_from("<HHI", self.data, at)
            inline = self.SIZES[kind] * values <= 4
            [place] = (at + 8,) if inline else struct.unpack_from("<I", self.data, at + 8)
            self.tags[tag] = (kind, values, place)

    def values(self, tag):
        kind, count, place = self.tags[tag]
        return list(struct.unpack_from(f"<{count}{self.CODES[kind]}", self.data, place))

    def change(self, tag, values):
        kind, count, place = self.tags[tag]
        struct.pack_into(f"<{count}{self.CODES[kind]}", self.data, place, *values)
        self.path.write_bytes(self.data)


SPACING_TAG, TIE_POINT_TAG, KEYS_TAG = 33550, 33922, 34735
PROJECTED_SYSTEM = 3072


def change_system(tiff, code):
    keys = tiff.values(KEYS_TAG)
    place = next(i for i in range(4, len(keys), 4) if keys[i] == PROJECTED_SYSTEM)
    keys[place + 3] = code
    tiff.change(KEYS_TAG, keys)


class Good(unittest.TestCase):
    def agrees(self, product, facts):
        done = run(ANNOTATION, "check", "--images", product)
        self.assertEqual(b"", done.stderr)
        first, *images = done.stdout.decode().splitlines()
        self.assertTrue(first.startswith(f"{product}: valid in schema"))
        self.assertEqual(len(facts), len(images))
        for image, fact in zip(images, facts):
            self.assertTrue(image.endswith(": as the annotation says: " + fact), image)
        info = run(GRIDKIT, "info", product)
        self.assertEqual(b"", info.stderr)

    def test_a_complex_product_passes_with_a_line_for_each_image(self):
        product = simulate("good", "--polarisations", "HH,VV")
        fact = (f"COSAR, 1 burst of {LINES} lines x {SAMPLES} samples, records of {RECORD} bytes, "
                f"{COSAR_BYTES} bytes")
        self.agrees(product, [fact, fact])

    def test_a_ground_range_product_passes(self):
        product = simulate("good", "--variant", "MGD")
        size = image_of(product, ".tif").stat().st_size
        self.agrees(product, [f"GeoTIFF, {SAMPLES} x {LINES} pixels of 16 bits, {size} bytes"])

    def test_mapped_products_pass_in_both_hemispheres_and_projections(self):
        for variant, projection, centre, system in (
                ("GEC", "UTM", "48,11", "UTM zone 32 N"), ("EEC", "UTM", "48,11", "UTM zone 32 N"),
                ("GEC", "UTM", "-33,15", "UTM zone 33 S"), ("GEC", "UTM", "-0.001,15", "UTM zone 33 S"),
                ("GEC", "UTM", "0.2,-179", "UTM zone 1 N"), ("EEC", "UPS", "78,15", "UPS N"),
                ("EEC", "UPS", "-78,15", "UPS S")):
            with self.subTest(variant=variant, projection=projection, centre=centre):
                product = simulate("good", "--variant", variant, "--projection", projection,
                                   f"--centre={centre}")
                size = image_of(product, ".tif").stat().st_size
                self.agrees(product, [f"GeoTIFF, {SAMPLES} x {LINES} pixels of 16 bits, {system}, WGS84, "
                                      f"spacing 2.5 x 2.5 m, {size} bytes"])

    def test_every_version_mode_and_profile_passes(self):
        for version in ("3.4", "3.5", "4.0"):
            for variant in ("SSC", "GEC"):
                for mode, profile in (("scansar", "maximal"), ("spotlight", "minimal")):
                    product = simulate("good", "--variant", variant, "--version-text", version, "--mode",
                                       mode, "--profile", profile, lines=64, samples=64)
                    self.assertEqual([], findings(product, status=0))

    def test_images_without_samples_pass(self):
        for variant in ("SSC", "EEC"):
            self.assertEqual([], findings(simulate("good", "--variant", variant, "--empty-images"), status=0))

    def test_an_image_larger_than_its_byte_counts_field_passes(self):
        # 4 x 40002 x 30004 bytes are more than 2^32, and the field holds what is left of them.
        product = simulate("good", "--empty-images", lines=30000, samples=40000)
        self.assertGreater(image_of(product, ".cos").stat().st_size, 1 << 32)
        self.assertEqual([], findings(product, status=0))
        image_of(product, ".cos").unlink()

    def test_without_the_option_no_image_is_looked_at(self):
        product = simulate("good")
        image_of(product, ".cos").unlink()
        [result] = json.loads(text(ANNOTATION, "check", "--json", product))
        self.assertNotIn("images", result)


class AnyFile(unittest.TestCase):
    def setUp(self):
        self.product = simulate("any")
        self.image = image_of(self.product, ".cos")

    def refused(self, found):
        self.assertEqual([("file", found, f"a COSAR image of {SAMPLES} x {LINES}", "annotation", True)],
                         findings(self.product))

    def test_a_missing_file_is_told_as_a_line(self):
        self.image.unlink()
        done = run(ANNOTATION, "check", "--images", self.product, status=1)
        self.assertEqual(f"tsx-annotation: {self.image}: file: found no such file, the annotation says a COSAR "
                         f"image of {SAMPLES} x {LINES}\n", done.stderr.decode())
        self.assertEqual(1, len(done.stdout.splitlines()), "no image was compared")
        self.refused("no such file")

    def test_an_empty_file_is_told(self):
        self.image.write_bytes(b"")
        self.refused("an empty file")

    def test_a_folder_or_a_pipe_in_its_place_is_told_and_nothing_hangs(self):
        self.image.unlink()
        self.image.mkdir()
        self.refused("no regular file")
        self.image.rmdir()
        os.mkfifo(self.image)
        self.refused("no regular file")

    def test_another_size_than_the_annotations_is_told(self):
        content = self.product.read_text()
        self.assertIn(f"<size>{COSAR_BYTES}</size>", content)
        self.product.write_text(content.replace(f"<size>{COSAR_BYTES}</size>",
                                                f"<size>{COSAR_BYTES + 1}</size>"))
        self.assertEqual([("size", f"{COSAR_BYTES} bytes", f"{COSAR_BYTES + 1} bytes", "annotation", True)],
                         findings(self.product))

    def test_fewer_files_than_layers_are_told_and_more_are_a_warning(self):
        content = self.product.read_text()
        self.product.write_text(content.replace("<numberOfLayers>1<", "<numberOfLayers>2<"))
        self.assertEqual([("image files", "1", "2 layers", "annotation", True)], findings(self.product))
        self.product.write_text(content.replace("<numberOfLayers>1<", "<numberOfLayers>0<"))
        self.assertEqual([("image files", "1", "0 layers", "annotation", False)],
                         findings(self.product, status=0))

    def test_an_annotation_that_does_not_bind_is_told_alone(self):
        self.product.write_text(self.product.read_text().replace("<numberOfLayers>1<", "<numberOfLayers>x<"))
        self.image.unlink()
        done = run(ANNOTATION, "check", "--images", "--json", self.product, status=1)
        [result] = json.loads(done.stdout)
        self.assertNotEqual(0, result["error"])
        self.assertNotIn("findings", result)
        self.assertNotIn(b"no such file", done.stderr)

    def test_json_names_file_facts_and_agreement(self):
        [result] = json.loads(text(ANNOTATION, "check", "--images", "--json", self.product))
        self.assertEqual([{"file": str(self.image), "agrees": True,
                           "facts": f"COSAR, 1 burst of {LINES} lines x {SAMPLES} samples, records of "
                                    f"{RECORD} bytes, {COSAR_BYTES} bytes"}], result["images"])


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


class GeoTiff(unittest.TestCase):
    def setUp(self):
        self.product = simulate("tiff", "--variant", "GEC")
        self.image = image_of(self.product, ".tif")
        without_sizes(self.product)
        self.map = json.loads((self.product.parent / "truth.json").read_text())["map"]

    def replace_by_read(self, *options):
        """The image is written anew by `gridkit read`, without a map."""
        output = FOLDER / "replacement.tif"
        run(GRIDKIT, "read", *options, output)
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
        self.replace_by_read(self.product, "X_HH_MAGNITUDE_1")
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


class Warnings(unittest.TestCase):
    def test_info_and_read_warn_in_one_line(self):
        product = simulate("warned")
        image = image_of(product, ".cos")
        image.write_bytes(widened(image.read_bytes(), 16))
        line = (f"gridkit: warning: {image}: record width: found {RECORD + 16} bytes, the annotation says {RECORD} "
                f"bytes, for {SAMPLES} samples a line; and 1 more; see `tsx-annotation check --images`\n").encode()
        self.assertEqual(line, run(GRIDKIT, "info", product).stderr)
        info = run(GRIDKIT, "info", "--json", product)
        self.assertEqual(line, info.stderr)
        self.assertEqual(2, len(json.loads(info.stdout)["layers"]))
        output = FOLDER / "warned.tif"
        self.assertEqual(line, run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output).stderr)
        block = run(GRIDKIT, "read", "--raw", product, "X_HH_MAGNITUDE_1", "--block", 0, 0)
        self.assertEqual(line, block.stderr)
        self.assertEqual(2 * 64 * 64, len(block.stdout))

    def test_the_gravest_is_the_one_that_is_told(self):
        product = simulate("gravest")
        without_sizes(product)
        image = image_of(product, ".cos")
        image.write_bytes(with_words(image.read_bytes(), BYTES=5)[:-1])
        self.assertEqual(["byte count", "file length"], [f[0] for f in findings(product)])
        self.assertEqual(f"gridkit: warning: {image}: file length: found {COSAR_BYTES - 1} bytes, the file's own "
                         f"header says {COSAR_BYTES} bytes; and 1 more; see `tsx-annotation check --images`\n",
                         run(GRIDKIT, "info", product).stderr.decode())

    def test_a_small_disagreement_is_told_alone(self):
        product = simulate("small")
        without_sizes(product)
        image = image_of(product, ".cos")
        image.write_bytes(image.read_bytes() + b"x")
        self.assertEqual(f"gridkit: warning: {image}: bytes behind the last burst: found 1, the file's own header "
                         "says none; see `tsx-annotation check --images`\n",
                         run(GRIDKIT, "info", product).stderr.decode())


class MadeImages(unittest.TestCase):
    def test_images_made_for_an_annotation_have_its_sizes(self):
        for variant, ending in (("SSC", ".cos"), ("MGD", ".tif")):
            product = simulate("made", "--variant", variant)
            image_of(product, ending).unlink()
            run(SIMULATE, "--images-for", product)
            self.assertEqual([], findings(product, status=0))


class RealAnnotations(unittest.TestCase):
    def test_pass_once_images_are_made(self):
        files = real_annotations()
        if not files:
            self.skipTest("none at hand")
        for file in files:
            copy = text(SIMULATE, "--images-for", file, FOLDER / "real").strip()
            done = run(ANNOTATION, "check", "--images", "--json", copy)
            self.assertEqual(b"", done.stderr)
            [result] = json.loads(done.stdout)
            self.assertTrue(result["images"])
            self.assertTrue(all(image["agrees"] for image in result["images"]))


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
