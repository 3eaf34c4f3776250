"""What `cmake --install` leaves: installed into a folder that is then moved, built against, and used.

    install_test.py BUILD FOLDER SOURCE
"""
import json
import math
import os
import re
import shutil
import struct
import subprocess
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

BUILD, FOLDER, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:4])
TREE = FOLDER / "tree"
WARNINGS = "-Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror"

# Headers of services for plug-ins are C; the others are C++.
C_HEADERS = {"debug/debug_channel.h", "handlepool/handlepool.h",
             *(f"gridkit/{name}.h" for name in ("companion", "dictionary", "export", "file", "gridkit", "instance", "layer",
                                                "map_projection", "memory", "preference", "report",
                                                "string_list", "text"))}
CPP_HEADERS = {*(f"gridkit/{name}.h" for name in ("error", "geolocation_grid", "image_radiometry", "image_reader", "indexed_png",
                                                  "info_json", "layer_map", "map_data", "map_point", "map_wkt", "opener",
                                                  "os_error", "partial_file", "plugin", "product", "product_facts",
                                                  "product_path", "radiometry", "raster_header", "raster_writer",
                                                  "record_decoder", "record_json", "samples", "shared_file", "version",
                                                  "whole_file")),
               *(f"rmdllib/{name}.h" for name in ("ellipsoid", "incidence", "model_ephemeris", "orbit_track", "placement",
                                                  "radar_generic_model", "radar_geometry", "range_doppler", "rational_model",
                                                  "vector3"))}

WIDTH, HEIGHT, BLOCK = 150, 100, 64


def grey(line, column):
    return line * 256 + column


def run(*command, status=0, **options):
    """What the command did; fails unless it exits with the status."""
    options.setdefault("cwd", FOLDER)
    done = subprocess.run([str(c) for c in command], capture_output=True, env=environment(), **options)
    if done.returncode != status:
        raise AssertionError(f"{command} gave {done.returncode}: {done.stdout.decode()}{done.stderr.decode()}")
    return done


def text(*command):
    return run(*command).stdout.decode()


def complaint(*command):
    return run(*command, status=1).stderr.decode()


def one(pattern):
    found = sorted(TREE.glob(pattern))
    assert len(found) == 1, (pattern, found)
    return found[0]


def environment():
    """Of someone who has the tree in a place that the system does not search."""
    kept = {name: os.environ[name] for name in ("HOME", "LANG", "TMPDIR") if name in os.environ}
    libraries = one("lib/**/libgridkit.so").parent
    return kept | {"PATH": f"{TREE}/bin:{os.environ['PATH']}", "CMAKE_PREFIX_PATH": str(TREE),
                   "PKG_CONFIG_PATH": str(libraries / "pkgconfig"), "LD_LIBRARY_PATH": str(libraries)}


def write_pgm(name, header=f"P5\n{WIDTH} {HEIGHT}\n65535\n", pixels=WIDTH * HEIGHT):
    values = [grey(i // WIDTH, i % WIDTH) for i in range(pixels)]
    path = FOLDER / name
    path.write_bytes(header.encode() + struct.pack(f">{pixels}H", *values))
    return path


def setUpModule():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    staged = FOLDER / "staged"
    subprocess.run(["cmake", "--install", BUILD, "--prefix", staged], check=True, capture_output=True)
    staged.rename(TREE)


class Headers(unittest.TestCase):
    def test_are_the_chosen_ones(self):
        root = TREE / "include/gridkit"
        self.assertEqual(C_HEADERS | CPP_HEADERS, {str(h.relative_to(root)) for h in root.rglob("*.*")})

    def test_compile_alone(self):
        def compile_one(header, *compiler):
            run(*compiler, *WARNINGS.split(), "-fsyntax-only", "-I", TREE / "include/gridkit",
                "-x", "c" if "c11" in compiler[1] else "c++", "-",
                input=f"#include <{header}>\nextern int declared;\n".encode())

        compilers = [(h, "g++", "-std=c++20") for h in C_HEADERS | CPP_HEADERS]
        compilers += [(h, "gcc", "-std=c11") for h in C_HEADERS]
        with ThreadPoolExecutor(2) as pool:
            list(pool.map(lambda c: compile_one(*c), compilers))  # fails with the first that fails


class Library(unittest.TestCase):
    def test_has_its_version_in_its_name(self):
        library = one("lib/**/libgridkit.so")
        real = library.resolve()
        self.assertRegex(real.name, r"^libgridkit\.so\.\d+\.\d+\.\d+$")
        soname = real.name.rsplit(".", 2)[0]
        self.assertIn(f"soname: [{soname}]", text("readelf", "-d", library))
        self.assertEqual(real, (library.parent / soname).resolve())

    def test_nothing_looks_for_the_build(self):
        binaries = [*TREE.glob("bin/*"), *TREE.glob("lib/**/*.so")]
        self.assertEqual({"gridkit", "tsx-annotation", "tsx-simulate", "libgridkit.so", "tsx.so", "_cffi.abi3.so",
                          "gdal_GRIDKIT.so"},
                         {b.name for b in binaries})
        for binary in binaries:
            paths = re.findall(r"R(?:UN)?PATH.*\[(.*)\]", text("readelf", "-d", binary))
            self.assertTrue(all(path.startswith("$ORIGIN/..") for path in paths), (binary, paths))
        for file in [*TREE.glob("lib/**/*.cmake"), *TREE.glob("lib/**/*.pc")]:
            self.assertNotIn(str(SOURCE), file.read_text(), file)

    def test_the_build_keeps_its_own_place(self):
        self.assertTrue((BUILD / "lib/libgridkit.so").is_file())
        self.assertTrue((BUILD / "lib/gridkit/tsx.so").is_file())

    def test_find_package_takes_fitting_versions_only(self):
        version = text("pkg-config", "--modversion", "gridkit").strip()
        major, minor, _ = (int(part) for part in version.split("."))
        folder = FOLDER / "versions"
        folder.mkdir()
        (folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.16)\nproject(versions CXX)\n"
            f"find_package(gridkit {major}.{minor} REQUIRED)\n"
            'message(STATUS "plug-ins: ${gridkit_PLUGIN_DIR}, version ${gridkit_VERSION}")\n'
            f"foreach(other {major}.{minor + 1} {major + 1}.0)\n"
            "  find_package(gridkit ${other} QUIET)\n"
            '  if(gridkit_FOUND)\n    message(FATAL_ERROR "${other} was found")\n  endif()\nendforeach()\n')
        self.assertIn(f"plug-ins: {one('lib/**/gridkit/tsx.so').parent}, version {version}",
                      text("cmake", "-S", folder, "-B", folder / "build"))


class Tsx(unittest.TestCase):
    """The plug-in that comes along, without a setting."""

    @classmethod
    def setUpClass(cls):
        cls.product = text("tsx-simulate", FOLDER / "product", "--lines", 200, "--samples", 180).strip()

    def test_is_found_beside_the_library(self):
        info = json.loads(text(TREE / "bin/gridkit", "info", "--json", self.product))
        self.assertEqual(["X_HH_MAGNITUDE_1", "X_HH_PHASE_2"], [layer["name"] for layer in info["layers"]])

    def test_the_programs_need_no_library_path(self):
        done = subprocess.run([TREE / "bin/gridkit", "info", "--json", self.product], capture_output=True, env={})
        self.assertEqual((0, b""), (done.returncode, done.stderr))

    def test_another_folder_can_be_named(self):
        empty = FOLDER / "empty"
        empty.mkdir()
        self.assertIn(f"no format plug-in in {empty}",
                      complaint("env", f"GRIDKIT_PLUGINS={empty}", "gridkit", "info", self.product))
        for value in ("", BUILD / "lib/gridkit"):
            run("env", f"GRIDKIT_PLUGINS={value}", "gridkit", "info", self.product)
        # The option has the last word.
        self.assertIn(f"no format plug-in in {empty}",
                      complaint("env", f"GRIDKIT_PLUGINS={BUILD}/lib/gridkit", "gridkit", "--plugins", empty,
                                "info", self.product))


class Examples(unittest.TestCase):
    """The second plug-in and the program, built from the installed sources alone."""

    @classmethod
    def setUpClass(cls):
        examples = text("pkg-config", "--variable=examplesdir", "gridkit").strip()
        for name in ("pgm", "embed"):
            build = FOLDER / f"build-{name}"
            run("cmake", "-S", f"{examples}/{name}", "-B", build, f"-DCMAKE_CXX_FLAGS=-O1 {WARNINGS}")
            run("cmake", "--build", build)
        run("cmake", "--install", FOLDER / "build-pgm")
        cls.embed = FOLDER / "build-embed/embed"
        cls.image = write_pgm("ramp.pgm")

    @classmethod
    def tearDownClass(cls):
        one("lib/**/pgm.so").unlink()

    def block(self, image, row, column):
        return run("gridkit", "read", "--raw", image, "GREY", "--block", row, column).stdout

    def test_the_plugin_lies_beside_the_other(self):
        self.assertEqual(one("lib/**/gridkit/tsx.so").parent, one("lib/**/pgm.so").parent)
        self.assertEqual(str(one("lib/**/pgm.so").parent.resolve()),
                         str(Path(text("pkg-config", "--variable=plugindir", "gridkit").strip()).resolve()))

    def test_a_picture_has_its_layer(self):
        info = json.loads(text("gridkit", "info", "--json", self.image))
        self.assertEqual({"format": "PGM", "description": "grey images of 16 bits, portable grey map",
                          "file": str(self.image), "data": [],
                          "layers": [{"name": "GREY", "pixelType": "u16", "layerType": "grey", "width": WIDTH,
                                      "height": HEIGHT, "blockWidth": BLOCK, "blockHeight": BLOCK,
                                      "mapInfo": None}],
                          # The picture has no annotation that tells more.
                          **dict.fromkeys(("product", "mode", "polarisations", "satellite", "times", "centre", "extent",
                                           "spacing", "resolution", "heights", "calibration", "incidence")),
                          "warnings": []}, info)

    def test_every_pixel_comes_and_the_rest_is_zero(self):
        for row in range(2):
            for column in range(3):
                expected = [grey(line, sample) if line < HEIGHT and sample < WIDTH else 0
                            for line in range(row * BLOCK, (row + 1) * BLOCK)
                            for sample in range(column * BLOCK, (column + 1) * BLOCK)]
                self.assertEqual(struct.pack(f"={BLOCK * BLOCK}H", *expected), self.block(self.image, row, column))

    def test_a_picture_becomes_another(self):
        run("gridkit", "read", "-q", self.image, "GREY", "ramp.tif")
        self.assertGreater((FOLDER / "ramp.tif").stat().st_size, 2 * WIDTH * HEIGHT)

    def test_refusals_say_what_is_wrong(self):
        self.assertIn("no layer BLUE; there is GREY", complaint(self.embed, self.image, "BLUE"))
        short = write_pgm("short.pgm", pixels=WIDTH * 70 + 3)
        self.assertIn(f"gridkit: {short}: block 1, 0 of GREY cannot be read: line 70 cannot be read\n",
                      complaint("gridkit", "read", "--raw", short, "GREY", "--block", 1, 0))
        for block in ((2, 0), (0, 3), (-1, 0)):
            self.assertIn("no such block", complaint("gridkit", "read", "--raw", self.image, "GREY",
                                                     f"--block={block[0]}", block[1]))

    def test_other_files_are_left_to_other_plugins(self):
        for header in ("P5 150 100 255\n", "P5 150 100 65536\n", "P2 150 100 65535\n", "P5150 100 65535\n",
                       "P5 0 100 65535\n", "P5 150 -1 65535\n", "P5 150 100 65535x", "P5 150 100 65535\0", "P5\n# by hand\n150 100 65535\n",
                       "P5 150 100 65535", "P5", ""):
            other = write_pgm("other.pgm", header, pixels=0)
            self.assertIn("none of the known formats", complaint("gridkit", "info", other), header)
        product = text("tsx-simulate", FOLDER / "beside", "--lines", 100, "--samples", 90).strip()
        self.assertEqual("TerraSAR-X", json.loads(text("gridkit", "info", "--json", product))["format"])

    def test_the_program_prints_layers_and_a_mean(self):
        # Lines and columns are summed by themselves: 256 times the mean line and the mean column.
        mean = 256 * (HEIGHT - 1) / 2 + (WIDTH - 1) / 2
        self.assertEqual(f"PGM\nGREY: {WIDTH} x {HEIGHT}, u16\nmean of GREY: {mean:.3f}\n",
                         text(self.embed, self.image, "GREY"))
        self.assertEqual("usage: embed FILE [LAYER]\n", run(self.embed, status=2).stderr.decode())
        self.assertIn("none of the known formats", complaint(self.embed, SOURCE / "LICENSE"))

    def test_the_program_takes_signed_pixels_for_what_they_are(self):
        product = text("tsx-simulate", FOLDER / "signed", "--lines", 128, "--samples", 128).strip()
        block = run("gridkit", "read", "--raw", product, "X_HH_PHASE_2", "--block", 0, 0).stdout
        self.assertLess(min(struct.unpack(f"={BLOCK * BLOCK}h", block)), 0)
        printed = text(self.embed, product, "X_HH_PHASE_2")
        self.assertIn("X_HH_PHASE_2: 128 x 128, s16\n", printed)
        mean = float(printed.split()[-1])
        # Phases of speckle lie evenly about 0, a uniform spread over 65536 with 16384 pixels.
        self.assertLess(abs(mean), 5 * 65536 / 12 ** 0.5 / 128)


class ExamplesInC(unittest.TestCase):
    """Programs in C with the installed header alone."""

    @classmethod
    def setUpClass(cls):
        examples = text("pkg-config", "--variable=examplesdir", "gridkit").strip()
        for name in ("c-samples", "c-threads"):
            build = FOLDER / f"build-{name}"
            run("cmake", "-S", f"{examples}/{name}", "-B", build, f"-DCMAKE_C_FLAGS=-std=c99 -O1 {WARNINGS}")
            run("cmake", "--build", build)
        cls.samples, cls.window = FOLDER / "build-c-samples/samples", FOLDER / "build-c-threads/window"
        cls.product = text("tsx-simulate", FOLDER / "in-c", "--lines", 70, "--samples", 90, "--polarisations", "HH,VV").strip()

    def test_samples_are_the_files(self):
        self.assertEqual("HH: 70 lines x 90 samples\nVV: 70 lines x 90 samples\n", text(self.samples, self.product))
        image, = (Path(self.product).parent / "IMAGEDATA").glob("*_HH_*.cos")
        # Four lines of annotation before the samples, two numbers of it before each line's.
        record, line, sample = 4 * (90 + 2), 33, 17
        pairs = struct.iter_unpack(">hh", image.read_bytes()[record * (4 + line) + 4 * (2 + sample):][:12])
        *printed, place = text(self.samples, self.product, line, sample).splitlines()
        self.assertEqual([f"{i:g} {q:+g}i" for i, q in pairs], printed)
        located = json.loads(text("gridkit", "locate", "--json", self.product, line, sample))
        self.assertEqual(f"at {located['latitude']:.6f}, {located['longitude']:.6f}, "
                         f"{located['height']:.0f} m above the ellipsoid", place)

    def test_a_window_on_two_threads_is_the_whole(self):
        raw = run("gridkit", "read", "-q", "--calibrate", "beta0", self.product, "HH", "in-c.img")
        self.assertEqual(b"", raw.stdout)
        values = struct.unpack("<6300f", (FOLDER / "in-c.img").read_bytes())
        mean = 10 * math.log10(sum(values) / len(values))
        self.assertEqual(f"6300 samples, mean beta0 {mean:.2f} dB\n", text(self.window, self.product, 0, 0, 70, 90))

    def test_refusals_say_what_is_wrong(self):
        self.assertIn("does not lie in the image", complaint(self.samples, self.product, 70, 0))
        self.assertIn("does not lie in the image", complaint(self.window, self.product, 0, 0, 71, 90))
        self.assertEqual("samples: nowhere: no such file\n", complaint(self.samples, "nowhere"))
        self.assertIn("no format plug-in in", complaint("env", "GRIDKIT_PLUGINS=/nowhere", self.samples, self.product))
        self.assertIn("usage", run(self.window, status=2).stderr.decode())


class AnnotationClasses(unittest.TestCase):
    """Programs on the installed classes, linked with the plug-in alone."""

    root = TREE / "include/tsx-annotation"

    @classmethod
    def setUpClass(cls):
        cls.build = FOLDER / "build-annotation"
        run("cmake", "-S", SOURCE / "tests/packaging/annotation", "-B", cls.build, f"-DCMAKE_CXX_FLAGS=-O0 {WARNINGS}")

    def test_every_shape_of_operation_is_there_in_every_version(self):
        for version in (34, 35, 40):
            run("cmake", "--build", self.build, "--target", f"operations{version}")
            self.assertEqual("every operation is there\n",
                             text(self.build / f"operations{version}", FOLDER / f"written{version}.xml"))

    def test_inline_functions_call_nothing_that_is_hidden(self):
        # All that the headers have is kept, called or not. The reader's insides are no part of the classes.
        classes = ("binding::", "level1bProduct", "version", "lmx::c_", "lmx::Diagnostic", "lmx::meaning", "lmx::operator")
        exported = {line.split(" ", 2)[2] for line in
                    text("nm", "-DC", "--defined-only", one("lib/**/gridkit/tsx.so")).splitlines()}
        for version in (34, 35, 40):
            kept = FOLDER / f"inline{version}.o"
            run("g++", "-std=c++20", "-O0", "-fkeep-inline-functions", "-c", "-I", self.root, "-o", kept, "-x", "c++", "-",
                input=f"#include <level1bProduct{version}/version{version}.h>\n".encode())
            called = {line.strip().split(" ", 1)[1] for line in text("nm", "-uC", kept).splitlines()}
            called = {name for name in called if name.startswith(classes)}
            self.assertGreater(len(called), 50)
            self.assertEqual(set(), called - exported)

    def test_the_programs_need_the_plugin_and_no_other_library_of_the_project(self):
        run("cmake", "--build", self.build, "--target", "operations40")
        needed = re.findall(r"NEEDED.*\[(.*)\]", text("readelf", "-d", self.build / "operations40"))
        self.assertEqual(["tsx.so"], [Path(name).name for name in needed if "tsx" in name or "gridkit" in name])

    def test_headers_compile_alone(self):
        headers = {str(h.relative_to(self.root)) for h in self.root.rglob("*.h")}
        for folder, name in (("binding", "storage"), ("lmx", "reader"), ("schema", "class_parts"),
                             ("level1bProduct34", "c_level1Product"), ("level1bProduct40", "version40")):
            self.assertIn(f"{folder}/{name}.h", headers)
        own = sorted(h for h in headers if not h.startswith("level1bProduct"))
        for header in [*own, "level1bProduct40/c_file.h", "level1bProduct34/version34.h"]:
            run("g++", "-std=c++20", *WARNINGS.split(), "-fsyntax-only", "-I", self.root, "-x", "c++", "-",
                input=f"#include <{header}>\nextern int declared;\n".encode())

    def test_find_package_says_when_the_plugin_is_not_there(self):
        plugin, folder = one("lib/**/gridkit/tsx.so"), FOLDER / "without"
        folder.mkdir()
        (folder / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.16)\nproject(without CXX)\n"
                                               "find_package(tsx-annotation REQUIRED)\n")
        away = plugin.rename(FOLDER / "tsx.so")
        try:
            told = " ".join(complaint("cmake", "-S", folder, "-B", folder / "build").split())
        finally:
            away.rename(plugin)
        self.assertIn(f"The plug-in that exports the classes is not there: {plugin}", told)


class Document(unittest.TestCase):
    """Pages for programmers by copy and paste, each in a folder of its own."""

    def do(self, page):
        folder = FOLDER / "reader" / page
        folder.mkdir(parents=True)
        blocks = re.findall(r"^```(sh|console)\n(.*?)^```$", (SOURCE / page).read_text(), re.M | re.S)
        self.assertGreater(len(blocks), 4)
        for kind, block in blocks:
            if kind == "sh":
                run("bash", "-euc", block, cwd=folder)
                continue
            for shown in re.split(r"^\$ ", block, flags=re.M)[1:]:
                command, _, output = shown.partition("\n")
                with self.subTest(command):
                    self.assertEqual(output, run("bash", "-euc", command, cwd=folder).stdout.decode())

    def test_writing_a_plugin_does_what_it_shows(self):
        self.do("docs/writing-a-plugin.md")
        one("lib/**/pgm.so").unlink()

    def test_the_host_in_c_does_what_it_shows(self):
        self.do("docs/c-api.md")

    def test_code_in_c_is_the_examples(self):
        examples = "".join((SOURCE / f"examples/{name}").read_text() for name in ("c-samples/samples.c", "c-threads/window.c"))
        parts = re.findall(r"^```c\n(.*?)^```$", (SOURCE / "docs/c-api.md").read_text(), re.M | re.S)
        self.assertEqual(2, len(parts))
        for part in parts:
            self.assertIn(part, examples)

    def test_annotations_in_a_program_do_what_is_shown(self):
        self.do("docs/annotation-classes.md")

    def test_code_for_annotations_is_the_examples(self):
        example = (SOURCE / "examples/annotation/remark.cpp").read_text()
        parts = re.findall(r"^```cpp\n(.*?)^```$", (SOURCE / "docs/annotation-classes.md").read_text(), re.M | re.S)
        self.assertEqual(3, len(parts))
        for part in parts:
            self.assertIn(part, example)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
