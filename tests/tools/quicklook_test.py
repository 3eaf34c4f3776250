"""`gridkit quicklook` from the outside: pixels against sums of its own over the layer's raw blocks, bright points
where the simulated truth has them, and what it refuses.

    quicklook_test.py BUILD FOLDER
"""
import array
import cmath
import json
import re
import math
import os
import sys
import unittest

from png import Png
from programs import BUILD, FOLDER, GRIDKIT, complaint, cut, run, simulate, text

BLACK_TRANSPARENT = (0, 0, 0, 0)


def truth(annotation):
    return json.loads((annotation.parent / "truth.json").read_text())


def quicklook(annotation, *arguments, layer=None):
    output = FOLDER / "picture.png"
    names = (annotation, layer, output) if layer else (annotation, output)
    run(GRIDKIT, "quicklook", *names, "--overwrite", *arguments)
    return Png(output.read_bytes())


def raw_layer(annotation, layer, kind):
    """All pixels, [line][sample], of a layer whose sides are multiples of the block's."""
    [info] = [found for found in json.loads(text(GRIDKIT, "info", "--json", annotation))["layers"]
              if found["name"] == layer]
    size = info["blockWidth"]
    assert info["width"] % size == 0 and info["height"] % size == 0
    lines = [array.array(kind) for _ in range(info["height"])]
    for row in range(info["height"] // size):
        for column in range(info["width"] // size):
            block = array.array(kind)
            block.frombytes(run(GRIDKIT, "read", "--raw", annotation, layer, "--block", row, column).stdout)
            for line in range(size):
                lines[row * size + line].extend(block[line * size:(line + 1) * size])
    return lines


def cells(lines, width, height):
    """The image's pixels by the picture's."""
    result = [[[] for _ in range(width)] for _ in range(height)]
    for r, line in enumerate(lines):
        row = result[r * height // len(lines)]
        for s, pixel in enumerate(line):
            row[s * width // len(line)].append(pixel)
    return result


def distance(a, b):
    """Of two colours, in OKLab."""
    def lab(colour):
        red, green, blue = ((v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055)**2.4)
                            for v in (c / 255 for c in colour[:3]))
        l = (0.4122214708 * red + 0.5363325363 * green + 0.0514459929 * blue)**(1 / 3)
        m = (0.2119034982 * red + 0.6806995451 * green + 0.1073969566 * blue)**(1 / 3)
        s = (0.0883024619 * red + 0.2817188376 * green + 0.6299787005 * blue)**(1 / 3)
        return (0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
                1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
                0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s)
    return math.dist(lab(a), lab(b))


class Magnitude(unittest.TestCase):
    def test_bright_points_are_where_the_truth_has_them(self):
        for variant in ("SSC", "MGD", "GEC", "EEC"):
            with self.subTest(variant=variant):
                options = ("--variant", variant)
                annotation = simulate("targets", *options, lines=900, samples=700)
                picture = quicklook(annotation, "--size", "300")
                self.assertEqual((255, 255, 255, 255), picture.colours[255])
                known = truth(annotation)
                # A target's peak is at most half a pixel from the line and sample next to it.
                places = [(round(t["line"]) * picture.height // known["lines"],
                           round(t["sample"]) * picture.width // known["samples"]) for t in known["targets"]]
                self.assertEqual(9, len(places))
                self.assertEqual([255] * 9, [picture.lines[row][column] for row, column in places])
                # The same scene without targets is as bright there as anywhere.
                bare = quicklook(simulate("bare", *options, "--targets", 0, lines=900, samples=700),
                                 "--size", "300")
                self.assertEqual((picture.width, picture.height), (bare.width, bare.height))
                self.assertLess([bare.lines[row][column] for row, column in places].count(255), 3)

    def test_pixels_are_roots_of_mean_intensities_between_the_percentiles(self):
        annotation = simulate("looks", "--variant", "GEC", lines=320, samples=256)
        picture = quicklook(annotation, "--size", 100)
        self.assertEqual((80, 100), (picture.width, picture.height))
        values = [[math.sqrt(sum(p * p for p in cell) / len(cell)) for cell in row]
                  for row in cells(raw_layer(annotation, "X_HH_MAGNITUDE_1", "H"), 80, 100)]
        ordered = sorted(v for row in values for v in row)
        low, high = (ordered[int(len(ordered) * share)] for share in (0.02, 0.98))
        for row, line in zip(values, picture.lines):
            for value, colour in zip(row, line):
                wanted = min(max((value - low) / (high - low) * 255, 0), 254) + 1
                # The ends of the stretch come to 1/1024 of their values, which are less than
                # a few times their difference; and a colour is a whole number.
                self.assertLessEqual(abs(wanted - colour), 3, (value, low, high))
        shown = picture.texts["Shows"]
        self.assertRegex(shown, r"^root of the mean intensity, black at [0-9.]+ and white at [0-9.]+$")
        black, white = (float(shown.split()[i]) for i in (7, 11))
        self.assertLess(abs(black - low), low * 0.005)
        self.assertLess(abs(white - high), high * 0.005)

    def test_a_share_of_the_pixels_is_black_and_white(self):
        picture = quicklook(simulate("shares", "--variant", "MGD", lines=600, samples=600), "--size", 500)
        pixels = b"".join(picture.lines)
        for colour in (1, 255):
            share = pixels.count(colour) / len(pixels)
            self.assertTrue(0.015 < share < 0.03, (colour, share))
        self.assertEqual(0, pixels.count(0))

    def test_greys_rise_evenly(self):
        picture = quicklook(simulate("greys", "--variant", "MGD"))
        self.assertEqual(BLACK_TRANSPARENT, picture.colours[0])
        greys = [c[0] for c in picture.colours[1:]]
        self.assertEqual(255, len(greys))
        self.assertEqual((0, 255), (greys[0], greys[-1]))
        self.assertLessEqual(max(b - a for a, b in zip(greys, greys[1:])), 2)
        for colour in picture.colours[1:]:
            self.assertEqual((colour[0],) * 3 + (255,), colour)

    def test_an_image_without_samples_is_transparent(self):
        picture = quicklook(simulate("empty", "--empty-images"))
        self.assertEqual({0}, set(b"".join(picture.lines)))
        self.assertEqual(BLACK_TRANSPARENT, picture.colours[0])


class Phase(unittest.TestCase):
    def test_pixels_are_directions_of_mean_phasors(self):
        annotation = simulate("phases", lines=256, samples=256)
        picture = quicklook(annotation, "--size", 64, layer="X_HH_PHASE_2")
        lines = raw_layer(annotation, "X_HH_PHASE_2", "h")
        near = 0
        for row, line in zip(cells(lines, picture.width, picture.height), picture.lines):
            for cell, colour in zip(row, line):
                mean = sum(cmath.exp(1j * math.pi * p / 32768) for p in cell)
                wanted = 1 + (cmath.phase(mean) + math.pi) / (2 * math.pi) * 255
                # Around the circle: colour 255 is beside colour 1.
                apart = abs(wanted - 0.5 - colour) % 255
                self.assertLessEqual(min(apart, 255 - apart), 1.01)
                near += 1
        self.assertEqual(picture.width * picture.height, near)

    def test_colours_go_round_in_even_steps(self):
        colours = quicklook(simulate("circle"), layer="X_HH_PHASE_2").colours
        self.assertEqual(BLACK_TRANSPARENT, colours[0])
        circle = colours[1:]
        self.assertEqual(255, len(circle))
        self.assertEqual({255}, {c[3] for c in circle})
        # A circle of radius 0.127; steps of ten colours, so that 8-bit rounding (0.003) is small.
        steps = [distance(circle[i], circle[(i + 10) % 255]) for i in range(255)]
        chord = 2 * 0.127 * math.sin(math.pi * 10 / 255)
        for step in steps:
            self.assertLess(abs(step - chord), 0.004)
        # Opposite phases look as different as the circle is wide.
        for i in range(127):
            self.assertGreater(distance(circle[i], circle[i + 127]), 0.24)


class Size(unittest.TestCase):
    def test_the_longer_side_has_the_size_and_the_aspect_is_the_grounds(self):
        for variant in ("SSC", "MGD", "GEC"):
            annotation = simulate("size", "--variant", variant, lines=512, samples=384)
            known = truth(annotation)
            corners = known["corners"]
            # Equirectangular over a kilometre; the corners come as first line, then last line.
            def metres(a, b):
                north = (a["latitude"] - b["latitude"]) * 111195
                east = (a["longitude"] - b["longitude"]) * 111195 * math.cos(math.radians(a["latitude"]))
                return math.hypot(north, east)
            by_place = {(round(c["line"]), round(c["sample"])): c for c in corners}
            last_line, last_sample = max(p[0] for p in by_place), max(p[1] for p in by_place)
            width = metres(by_place[0, 0], by_place[0, last_sample])
            height = metres(by_place[0, 0], by_place[last_line, 0])
            picture = quicklook(annotation, "--size", 200)
            with self.subTest(variant=variant):
                self.assertEqual(200, max(picture.width, picture.height))
                self.assertLess(abs(picture.width / picture.height - width / height), 0.02)
                self.assertTrue(picture.texts["Aspect"].startswith("the ground's; pixels"))

    def test_no_pixel_is_invented(self):
        picture = quicklook(simulate("small", "--variant", "GEC", lines=90, samples=70), "--size", 4096)
        self.assertEqual((70, 90), (picture.width, picture.height))

    def test_narrow_images_keep_a_pixel(self):
        picture = quicklook(simulate("narrow", "--variant", "MGD", lines=4000, samples=64), "--size", 16)
        self.assertEqual((1, 16), (picture.width, picture.height))


class WithoutData(unittest.TestCase):
    def test_lines_that_do_not_come_are_told_and_transparent(self):
        annotation = cut(simulate("missing", lines=293), 292)
        output = FOLDER / "missing.png"
        done = run(GRIDKIT, "quicklook", annotation, output, "--overwrite")
        self.assertTrue(done.stderr.decode().endswith(
            f"gridkit: warning: {output}: lines of the image without data, in part or in whole, are "
            "transparent: 292\n"), done.stderr)
        picture = Png(output.read_bytes())
        last = 292 * picture.height // 293
        self.assertEqual({0}, set(picture.lines[last]))
        self.assertNotEqual({0}, set(picture.lines[last - 1]))
        self.assertEqual("292", picture.texts["Lines without data"])

    def test_of_an_image_that_was_cut_every_line_is_shown(self):
        annotation, output = simulate("cut"), FOLDER / "cut.png"
        whole = quicklook(annotation)
        image = next((annotation.parent / "IMAGEDATA").iterdir())
        # Four lines of annotation and 150 of the image, each of two values and 260 samples of 4 bytes.
        os.truncate(image, 4 * 154 * 262)
        done = run(GRIDKIT, "quicklook", annotation, output, "--overwrite")
        told = [line for line in done.stderr.decode().splitlines() if "without data" in line]
        self.assertEqual([f"gridkit: warning: {output}: lines of the image without data, in part or in whole, are "
                          "transparent: 150-299"], told)
        picture = Png(output.read_bytes())
        self.assertEqual(whole.height, picture.height)
        held = 150 * picture.height // 300
        self.assertTrue(all(any(line) for line in picture.lines[:held]))
        self.assertEqual({0}, {value for line in picture.lines[held + 1:] for value in line})


class Bounds(unittest.TestCase):
    def test_a_large_layer_takes_one_pass_in_little_memory(self):
        """16,384 x 16,384 samples are 1 GiB of image and 512 MiB of pixels."""
        annotation = simulate("large", "--empty-images", lines=16384, samples=16384)
        image = next((annotation.parent / "IMAGEDATA").glob("*.cos"))
        self.assertGreater(image.stat().st_size, 2**30)
        # A process of its own, so that its peak is this command's alone.
        peak = text(sys.executable, "-c",
                    "import resource, subprocess, sys\n"
                    "subprocess.run(sys.argv[1:], check=True)\n"
                    "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)",
                    GRIDKIT, "quicklook", annotation, FOLDER / "large.png", "--overwrite")
        sanitized = re.search(r"^TSX_SANITIZE:\w+=\w", (BUILD / "CMakeCache.txt").read_text(), re.M)
        self.assertLess(int(peak), (1024 if sanitized else 128) * 1024)  # KiB; sanitizers keep what is freed


class Refusals(unittest.TestCase):
    def test_an_existing_file_is_kept_unless_told(self):
        annotation = simulate("keep", lines=64, samples=64)
        output = FOLDER / "keep.png"
        output.write_text("mine")
        self.assertEqual(f"gridkit: {output}: exists already; --overwrite replaces it\n",
                         complaint(GRIDKIT, "quicklook", annotation, output))
        self.assertEqual("mine", output.read_text())
        run(GRIDKIT, "quicklook", annotation, output, "--overwrite")
        self.assertEqual(b"\x89PNG", output.read_bytes()[:4])

    def test_an_unknown_layer_leaves_no_file(self):
        annotation = simulate("unknown", lines=64, samples=64)
        output = FOLDER / "never.png"
        self.assertIn('did you mean "X_HH_MAGNITUDE_1"?',
                      complaint(GRIDKIT, "quicklook", annotation, "X_HH_MAGNITUDE", output))
        self.assertEqual([], list(FOLDER.glob("never.png*")))

    def test_a_folder_that_is_not_there(self):
        annotation = simulate("nowhere", lines=64, samples=64)
        self.assertIn("/nonexistent/x.png: cannot be written: there is no folder /nonexistent",
                      complaint(GRIDKIT, "quicklook", annotation, "/nonexistent/x.png"))

    def test_wrong_use(self):
        for arguments in ((), ("a.xml",), ("a.xml", "b.png", "--size", "15"), ("a.xml", "b.png", "--size", "8193"),
                          ("a.xml", "b", "c", "d.png")):
            run(GRIDKIT, "quicklook", *arguments, status=2)

    def test_nothing_is_printed_in_a_pipe(self):
        done = run(GRIDKIT, "quicklook", simulate("quiet", lines=64, samples=64), FOLDER / "quiet.png",
                   "--overwrite")
        self.assertEqual((b"", b""), (done.stdout, done.stderr))


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
