"""Image files against their annotation: `tsx-annotation check --images`, and the warnings of `gridkit`.

    images_test.py BUILD FOLDER
"""
import json
import os
import sys
import unittest

from image_files import COSAR_BYTES, LINES, RECORD, SAMPLES, findings, image_of, widened, with_words, without_sizes
from programs import ANNOTATION, FOLDER, GRIDKIT, SIMULATE, real_annotations, run, simulate, text


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

    def test_a_name_of_several_lines_is_told_in_one(self):
        name = self.image.name
        self.product.write_text(self.product.read_text().replace(name, "a&#10;b&#9;"))
        done = run(ANNOTATION, "check", "--images", self.product, status=1)
        self.assertEqual(f"tsx-annotation: {self.image.parent}/a?b?: file: found no such file, the annotation says "
                         f"a COSAR image of {SAMPLES} x {LINES}\n", done.stderr.decode())

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
        output.unlink(missing_ok=True)
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
            copy = text(SIMULATE, "--images-for", file, FOLDER / "real", "--empty-images").strip()
            done = run(ANNOTATION, "check", "--images", "--json", copy)
            self.assertEqual(b"", done.stderr)
            [result] = json.loads(done.stdout)
            self.assertTrue(result["images"])
            self.assertTrue(all(image["agrees"] for image in result["images"]))


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
