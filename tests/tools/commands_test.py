"""The three programs from the outside: what they print, what they leave and how they exit.

    commands_test.py BUILD FOLDER
"""
import json
import math
import re
import resource
import signal
import struct
import subprocess
import unittest

from programs import ANNOTATION, BUILD, FOLDER, GRIDKIT, SIMULATE, complaint, main, real_annotations, run, simulate, text

LINES, SAMPLES = 300, 260


def cosar_sample(annotation, line, sample):
    image = sorted((annotation.parent / "IMAGEDATA").glob("*.cos"))[0]
    offset = 4 * ((line + 4) * (SAMPLES + 2) + 2 + sample)
    return struct.unpack(">hh", image.read_bytes()[offset:offset + 4])


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


def magnitude(i, q):
    return int(single(math.sqrt(single(single(i * i) + single(q * q)))))


def phase(i, q):
    return 0 if i == 0 or q == 0 else int(single(math.atan2(q, i)) * 10430.3783505)


class Formats(unittest.TestCase):
    def test_lists_the_format(self):
        self.assertEqual("TerraSAR-X  TSX1*.xml  Raster DLL for TerraSAR-X Radar Sensor, "
                         "launched: June 15, 2007\n", text(GRIDKIT, "formats"))

    def test_a_folder_without_plugins_is_refused(self):
        self.assertIn("no format plug-in in", complaint(GRIDKIT, "--plugins", FOLDER, "formats"))


class WrongUse(unittest.TestCase):
    def test_exits_with_two(self):
        for command in ([GRIDKIT], [GRIDKIT, "nonsense"], [GRIDKIT, "info"], [ANNOTATION, "check"],
                        [ANNOTATION, "check", "x", "--schema", "3.6"], [SIMULATE],
                        [SIMULATE, FOLDER, "--variant", "XXX"],
                        [GRIDKIT, "read", "a", "b", "--raw"],
                        [GRIDKIT, "read", "a", "b", "c", "--block", "1", "2"]):
            run(*command, status=2)

    def test_help_is_no_failure(self):
        for program in (GRIDKIT, ANNOTATION, SIMULATE):
            self.assertIn("Usage", text(program, "--help"))


class Complex(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("ssc", "--polarisations", "HH,VV", "--version-text", "3.4")

    def test_info_as_json(self):
        info = json.loads(text(GRIDKIT, "info", "--json", self.product))
        self.assertEqual("TerraSAR-X", info["format"])
        self.assertEqual(str(self.product), info["file"])
        self.assertEqual(["X_HH_MAGNITUDE_1", "X_HH_PHASE_2", "X_VV_MAGNITUDE_3", "X_VV_PHASE_4"],
                         [layer["name"] for layer in info["layers"]])
        self.assertEqual({"name": "X_HH_PHASE_2", "pixelType": "s16", "layerType": "athematic",
                          "width": SAMPLES, "height": LINES, "blockWidth": 64, "blockHeight": 64,
                          "mapInfo": None}, info["layers"][1])

    def test_a_raw_block_holds_the_formulas_pixels(self):
        for layer, formula, code in (("X_HH_MAGNITUDE_1", magnitude, "H"), ("X_HH_PHASE_2", phase, "h")):
            block = run(GRIDKIT, "read", "--raw", self.product, layer, "--block", 2, 1).stdout
            pixels = struct.unpack(f"={64 * 64}{code}", block)
            for line, sample in ((0, 0), (5, 63), (63, 17)):
                i, q = cosar_sample(self.product, 128 + line, 64 + sample)
                self.assertEqual(formula(i, q), pixels[line * 64 + sample], (layer, line, sample))

    def test_a_raw_block_without_data_is_status_three(self):
        done = run(GRIDKIT, "read", "--raw", self.product, "X_HH_MAGNITUDE_1", "--block", 4, 0, status=3)
        self.assertEqual(b"", done.stdout)

    def test_block_size_follows_the_preferences(self):
        preferences = FOLDER / "preferences"
        preferences.write_text("import.default_block_size = 100.9\n")
        info = json.loads(text(GRIDKIT, "--preferences", preferences, "info", "--json", self.product))
        self.assertEqual(100, info["layers"][0]["blockWidth"])

    def test_the_whole_layer_loses_no_line(self):
        # 300 lines have the divisors 20 and 60; 260 samples 20: the last line comes whole.
        output = FOLDER / "whole.tif"
        done = run(GRIDKIT, "read", self.product, "X_HH_MAGNITUDE_1", output)
        self.assertEqual(b"", done.stderr)
        self.assertEqual(b"", done.stdout)
        tail = run(GRIDKIT, "read", self.product, "X_HH_MAGNITUDE_1", FOLDER / "tail.png", "--window",
                   0, LINES - 1, SAMPLES, 1)
        self.assertEqual(b"", tail.stderr)
        row = [magnitude(*cosar_sample(self.product, LINES - 1, s)) for s in range(SAMPLES)]
        self.assertTrue(struct.pack(f"={SAMPLES}H", *row) in output.read_bytes())

    def test_a_layer_past_the_images_is_refused(self):
        raw = ("read", "--raw", self.product, "X_VV_PHASE_8", "--block", 0, 0)
        self.assertIn("gkf_fseeko failed", complaint(GRIDKIT, "--debug", *raw))
        message = complaint(GRIDKIT, *raw)
        self.assertNotIn("gkf_fseeko", message)
        self.assertIn('no layer "X_VV_PHASE_8"; did you mean "X_VV_PHASE_4"?', message)

    def test_an_unknown_layer_is_refused(self):
        message = complaint(GRIDKIT, "read", "--raw", self.product, "layer", "--block", 0, 0)
        self.assertTrue(message.startswith(f'gridkit: {self.product}: no layer "layer"'))

    def test_a_misspelt_layer_brings_a_suggestion(self):
        for misspelt, meant in (("X_HH_MAGNITUD_1", "X_HH_MAGNITUDE_1"), ("x_vv_phase_4", "X_VV_PHASE_4"),
                                ("X_HH_PHASE_1", "X_HH_PHASE_2"), ("X_VV_MAG", "X_VV_MAGNITUDE_3")):
            message = complaint(GRIDKIT, "read", self.product, misspelt, FOLDER / "no.tif")
            self.assertIn(f'no layer "{misspelt}"; did you mean "{meant}"?\n  the layers are '
                          "X_HH_MAGNITUDE_1 X_HH_PHASE_2 X_VV_MAGNITUDE_3 X_VV_PHASE_4\n", message)
            self.assertFalse((FOLDER / "no.tif").exists())

    def test_the_debug_channel_shows_the_counters_when_asked(self):
        done = run(GRIDKIT, "--debug", "info", self.product)
        self.assertIn(b"\n s_tsxLayerOpenCount: 4 \n", done.stderr)


class WithoutCompanion(unittest.TestCase):
    """The plug-in in a folder of its own, where its companion does not lie beside it."""

    @classmethod
    def setUpClass(cls):
        cls.product = simulate("prime", lines=293)  # a prime: no block reaches the end of the last line
        cls.plugins = FOLDER / "plugins alone"
        cls.plugins.mkdir()
        (cls.plugins / "tsx.so").symlink_to((BUILD / "lib/gridkit/tsx.so").resolve())

    def test_samples_cannot_be_reached(self):
        self.assertEqual(f"gridkit: the plug-in has no companion ({self.plugins}/companions/tsx.so), so that samples "
                         "cannot be reached; its layers can\n",
                         complaint(GRIDKIT, "--plugins", self.plugins, "samples", self.product))

    def test_what_no_block_reaches_is_told_and_marked(self):
        output = FOLDER / "prime.tif"
        done = run(GRIDKIT, "--plugins", self.plugins, "read", self.product, "X_HH_MAGNITUDE_1", output)
        self.assertIn(b"lines of the image that cannot be reached, in part or in whole: 292\n", done.stderr)
        self.assertTrue(b"LINES_OUT_OF_REACH" in output.read_bytes())


class Detected(unittest.TestCase):
    def test_pixels_of_every_variant_are_the_files_own(self):
        for variant, options in (("MGD", ()), ("GEC", ()), ("EEC", ()),
                                 ("GEC", ("--projection", "UPS", "--centre", "78,15"))):
            product = simulate("det" + variant + str(len(options)), "--variant", variant, *options)
            image = next((product.parent / "IMAGEDATA").glob("*.tif")).read_bytes()
            block = run(GRIDKIT, "read", "--raw", product, "X_HH_MAGNITUDE_1", "--block", 4, 4).stdout
            pixels = struct.unpack(f"={64 * 64}H", block)
            # The image's last line stands at the file's end or before its trailer: look it up whole.
            row = struct.pack(f"={SAMPLES - 256}H", *pixels[:SAMPLES - 256])
            self.assertTrue(row in image)
            self.assertEqual(0, pixels[SAMPLES - 256], "zeros right of the image")
            self.assertEqual((0,) * 64, pixels[-64:], "zeros below the image")


class Mapped(unittest.TestCase):
    def test_info_tells_the_map(self):
        product = simulate("mapped", "--variant", "GEC")
        truth = json.loads((product.parent / "truth.json").read_text())["map"]
        [layer] = json.loads(text(GRIDKIT, "info", "--json", product))["layers"]
        corner = truth["spacing"] / 2  # the truth is the first pixel's centre
        self.assertEqual({"projection": "UTM",
                          "upperLeft": [truth["upperLeftEasting"] - corner,
                                        truth["upperLeftNorthing"] + corner],
                          "pixelSize": [truth["spacing"], -truth["spacing"]],
                          "units": "metre"}, layer["mapInfo"])
        polar = simulate("polar", "--variant", "EEC", "--projection", "UPS", "--centre", "78,15")
        [layer] = json.loads(text(GRIDKIT, "info", "--json", polar))["layers"]
        self.assertEqual("Polar Stereographic", layer["mapInfo"]["projection"])


class EveryVersion(unittest.TestCase):
    def test_products_open_whatever_their_version(self):
        for version in ("3.4", "3.5", "3.6", "3.7", "4.0", "4.1", "4.11"):
            product = simulate("version", "--version-text", version, lines=64, samples=64)
            info = json.loads(text(GRIDKIT, "info", "--json", product))
            self.assertEqual(2, len(info["layers"]))


class Refusals(unittest.TestCase):
    def test_faults_are_told_with_their_place(self):
        product = simulate("faulty")
        annotation = product.read_text()
        product.write_text(annotation.replace("<orbitCycle>25<", "<orbitCycle>2x5<"))
        line = annotation[:annotation.index("<orbitCycle>")].count("\n") + 1
        message = complaint(GRIDKIT, "layers", product)
        self.assertTrue(message.startswith(f"gridkit: {product}:{line}:"))
        self.assertEqual(1, message.count(str(product)))
        self.assertIn("/level1Product/productInfo/missionInfo/orbitCycle", message)
        self.assertTrue(message.endswith('found "2x5", expected an integer\n'))
        self.assertIn("\ngridkit: debug: tsxFileTitleIdentifyAndOpen: Wrong XML schema file detected",
                      complaint(GRIDKIT, "--debug", "layers", product))

    def test_lists_that_hold_nothing_are_named(self):
        # Valid by the schema, but no product can be read without them.
        for variant, element in (("SSC", "productVariant"), ("SSC", "projection"), ("MGD", "projection"),
                                 ("MGD", "quicklookDataStartWith"), ("GEC", "mapProjection")):
            for empty in (f"<{element}/>", f"<{element}> </{element}>"):
                product = simulate("empty", "--variant", variant)
                content = re.sub(f"<{element}>[^<]*</{element}>", empty, product.read_text())
                product.write_text(content)
                run(ANNOTATION, "check", product)
                message = complaint(GRIDKIT, "info", product)
                self.assertEqual(1, message.count(str(product)))
                self.assertIn(f"/{element}: the element is absent or holds no text", message)

    def test_foreign_and_missing_files(self):
        foreign = FOLDER / "foreign.xml"
        foreign.write_text("<a/>")
        self.assertEqual(f"gridkit: {foreign}: of none of the known formats; see `gridkit formats`\n",
                         complaint(GRIDKIT, "info", foreign))
        self.assertEqual("gridkit: /nonexistent.xml: no such file\n",
                         complaint(GRIDKIT, "info", "/nonexistent.xml"))


class Versions(unittest.TestCase):
    def test_are_told_in_one_line(self):
        for program, name in ((GRIDKIT, "gridkit"), (ANNOTATION, "tsx-annotation"), (SIMULATE, "tsx-simulate")):
            self.assertRegex(text(program, "--version"),
                             rf"^{name} \d+\.\d+\.\d+ \(GDAL \d+\.\d+\S*, PROJ \d+\.\d+\.\d+, expat \d+\.\d+\.\d+\)\n$")


class Check(unittest.TestCase):
    def test_valid_and_faulty_files_in_one_list(self):
        product = simulate("check", "--version-text", "3.6")
        broken = FOLDER / "broken.xml"
        broken.write_text("\n\n\n\n\n\n<!-- 3.5 --><level1Product><x/></level1Product>")
        done = run(ANNOTATION, "check", "--json", product, broken, "/nonexistent.xml", status=1)
        good, bad, missing = json.loads(done.stdout)
        self.assertEqual((0, None, "3.6", "3.5"),
                         (good["error"], good["name"], good["version"], good["schema"]))
        self.assertEqual((21, "generalHeader", "3.5", "/level1Product", 7, 28),
                         (bad["error"], bad["name"], bad["version"], bad["path"], bad["line"],
                          bad["column"]))
        self.assertEqual((1, None), (missing["error"], missing["version"]))

    def test_every_fault_is_a_line_when_all_are_asked_for(self):
        product = simulate("faults").read_text()
        faulty = FOLDER / "faults.xml"
        changed = re.sub("<(orbitCycle|absOrbit)>[^<]*", r"<\1>none", product)
        changed = re.sub(" *<lookDirection>[^<]*</lookDirection>\n", "", changed, count=1)
        faulty.write_text(changed)
        told = complaint(ANNOTATION, "check", "--all", faulty).splitlines()
        self.assertEqual(told[:1], complaint(ANNOTATION, "check", faulty).splitlines())
        for line, path in zip(told, ("missionInfo/orbitCycle", "missionInfo/absOrbit", "acquisitionInfo"), strict=True):
            self.assertRegex(line, rf"^tsx-annotation: {faulty}:\d+:\d+: /level1Product/productInfo/{path}: ")
        self.assertIn("expected <lookDirection>", told[2])

    def test_a_list_of_faults_says_where_it_has_to_end(self):
        product = simulate("lost").read_text()
        faulty = FOLDER / "lost.xml"
        faulty.write_text(product.replace("<productInfo>", "<other/><productInfo>", 1).replace("<orbitCycle>", "<orbitCycle>x"))
        told = complaint(ANNOTATION, "check", "--all", faulty).splitlines()
        self.assertEqual(2, len(told), told)
        self.assertIn("found <other>", told[0])
        self.assertEqual(f"tsx-annotation: {faulty}: what follows the last fault could not be checked", told[1])

    def test_the_schema_can_be_overridden(self):
        product = simulate("override", "--version-text", "4.0")
        run(ANNOTATION, "check", product)
        done = run(ANNOTATION, "check", "--json", "--schema", "3.4", product, status=1)
        [result] = json.loads(done.stdout)
        self.assertEqual(("3.4", 21, "sceneCenterCoord"),
                         (result["schema"], result["error"], result["name"]))


class View(unittest.TestCase):
    def test_shows_all_accessors_in_their_order(self):
        product = simulate("view", "--polarisations", "HH,VV")
        view = json.loads(text(ANNOTATION, "view", "--json", product))
        truth = json.loads((product.parent / "truth.json").read_text())
        self.assertEqual(48, len(view))
        self.assertEqual(["productVariant", "imageDataFormat", "numberOfLayers"], list(view)[:3])
        self.assertEqual("polLayer", list(view)[-1])
        self.assertEqual(["HH", "VV"], view["polLayer"])
        self.assertEqual(["HH", "VV"], [factor["polLayer"] for factor in view["calFactors"]])
        self.assertEqual(view["calFactor"], view["calFactors"][0]["calFactor"])
        self.assertIsNone(view["mapProjection"])
        self.assertEqual(truth["firstRangeTime"], view["firstPixelRangeTime"])
        self.assertEqual([state["position"][0] for state in truth["orbit"]], view["stateVecPosX"])
        self.assertEqual(len(view["stateVecVelZ"]), view["numStateVectors"])
        self.assertEqual([], view["slantToGroundCoefficient"])

    def test_as_text_has_units(self):
        for variant, lines in (
                ("SSC", (r"centerFrequency: \d+\S* Hz", r"columnSpacing: \S+ s", r"sceneAverageHeight: 600\.0 m",
                         r"stateVecVelX: \[.*\] m/s", r"numberOfRows: 300", r"slantToGroundCoefficient: \[\] m/s\^i")),
                ("MGD", (r"columnSpacing: 2\.75 m", r"rowSpacing: 2\.75 m", r'polLayer: \["HH"\]'))):
            shown = text(ANNOTATION, "view", simulate("units", "--variant", variant)).splitlines()
            for line in lines:
                self.assertEqual(1, len([one for one in shown if re.fullmatch(line, one)]), line)

    def test_is_the_same_in_every_schema(self):
        views = []
        for version in ("3.4", "3.5", "4.0"):
            product = simulate("views", "--version-text", version, "--variant", "MGD")
            views.append(text(ANNOTATION, "view", "--json", product))
        self.assertEqual(1, len(set(views)))
        self.assertEqual(6, len(json.loads(views[0])["slantToGroundCoefficient"]))


class Folder(unittest.TestCase):
    """A product's folder in place of its annotation."""

    def test_stands_for_its_annotation(self):
        product = simulate("folder", "--profile", "maximal")
        for folder in (product.parent, FOLDER / "folder"):
            self.assertTrue(text(ANNOTATION, "check", "--images", folder).startswith(f"{product}: valid in schema"))
            self.assertEqual(text(ANNOTATION, "view", product), text(ANNOTATION, "view", folder))
            run(ANNOTATION, "rewrite", folder, FOLDER / "of_folder.xml", "--overwrite")
            self.assertEqual(product.read_bytes(), (FOLDER / "of_folder.xml").read_bytes())
        [result] = json.loads(text(ANNOTATION, "check", "--json", product.parent))
        self.assertEqual(str(product), result["file"])

    def test_of_a_faulty_annotation_tells_its_place(self):
        product = simulate("faulty_folder")
        content = product.read_text()
        product.write_text(content.replace("<orbitCycle>", "<orbitCycle>x", 1))
        self.assertIn(f"{product}:", complaint(ANNOTATION, "check", FOLDER / "faulty_folder"))

    def test_of_several_products_lists_them(self):
        first, second = simulate("several/a"), simulate("several/b")
        for verb in (["check"], ["view"], ["rewrite"]):
            output = [FOLDER / "never.xml"] if verb == ["rewrite"] else []
            message = complaint(ANNOTATION, *verb, FOLDER / "several", *output)
            self.assertEqual(f"tsx-annotation: {FOLDER / 'several'}: holds several products; name one of\n"
                             f"  {first}\n  {second}\n", message)
        self.assertEqual(message.replace("tsx-annotation", "gridkit"),
                         complaint(GRIDKIT, "info", FOLDER / "several"))

    def test_of_too_many_files_is_refused_by_its_own_name(self):
        crowd = FOLDER / "crowd"
        (crowd / "below").mkdir(parents=True)
        for i in range(20_001):
            (crowd / "below" / f"{i}.txt").touch()
        words = f"{crowd}: too many files to look through; name the product's own folder or its annotation\n"
        self.assertEqual(f"tsx-annotation: {words}", complaint(ANNOTATION, "check", crowd))
        self.assertEqual(f"tsx-annotation: {words}", complaint(ANNOTATION, "view", crowd))
        self.assertEqual(f"gridkit: {words}", complaint(GRIDKIT, "info", crowd))

    def test_without_a_product_is_one_refusal_of_several_results(self):
        product, empty = simulate("beside"), FOLDER / "empty"
        empty.mkdir()
        done = run(ANNOTATION, "check", "--json", empty, product, status=1)
        self.assertEqual(f"tsx-annotation: {empty}: the folder holds no product\n", done.stderr.decode())
        refused, valid = json.loads(done.stdout)
        self.assertEqual((str(empty), "the folder holds no product"), (refused["file"], refused["message"]))
        self.assertEqual((0, "valid"), (valid["error"], valid["message"]))
        self.assertNotEqual(0, refused["error"])


class Rewrite(unittest.TestCase):
    def test_what_is_written_back_is_the_same(self):
        product = simulate("rewrite", "--profile", "maximal")
        output = FOLDER / "rewritten.xml"
        run(ANNOTATION, "rewrite", product, output)
        self.assertEqual(product.read_bytes(), output.read_bytes())

    def test_an_output_is_replaced_only_when_asked(self):
        product, output = simulate("replaced", "--profile", "maximal"), FOLDER / "precious.xml"
        output.write_text("precious")
        self.assertEqual(f"tsx-annotation: {output}: exists already; --overwrite replaces it\n",
                         complaint(ANNOTATION, "rewrite", product, output))
        self.assertEqual("precious", output.read_text())
        run(ANNOTATION, "rewrite", "--overwrite", product, output)
        self.assertEqual(product.read_bytes(), output.read_bytes())
        self.assertEqual([output], list(FOLDER.glob("precious.xml*")))

    def test_a_link_stands_for_its_file(self):
        product, real, link = simulate("linked", "--profile", "maximal"), FOLDER / "real.xml", FOLDER / "link.xml"
        real.write_text("old")
        link.symlink_to(real)
        run(ANNOTATION, "rewrite", "--overwrite", product, link)
        self.assertTrue(link.is_symlink())
        self.assertEqual(product.read_bytes(), real.read_bytes())

    def test_of_an_output_that_cannot_be_whole_nothing_is_left(self):
        product, folder = simulate("whole"), FOLDER / "small"
        folder.mkdir()
        output = folder / "out.xml"
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))
        for before in (None, "precious"):
            if before:
                output.write_text(before)
            done = subprocess.run([ANNOTATION, "rewrite", "--overwrite", product, output], capture_output=True,
                                  preexec_fn=lambda: (signal.signal(signal.SIGXFSZ, signal.SIG_IGN), limit()))
            self.assertEqual(1, done.returncode)
            self.assertEqual(f"tsx-annotation: {output}: cannot be written: the file would grow past the limit on "
                             "file sizes\n", done.stderr.decode())
            self.assertEqual([output] if before else [], list(folder.iterdir()))
        self.assertEqual("precious", output.read_text())

    def test_an_empty_element_that_writing_could_not_give_back_is_told_by_its_path(self):
        product = simulate("sparse").read_text()
        output = FOLDER / "sparse_again.xml"
        for old, new, told in (
                ("</productSpecific>", "<geocodedImageInfo/></productSpecific>",
                 "/level1Product/productSpecific/geocodedImageInfo: has no <geocodingSetup>"),
                (re.search(r"</productType>\s*<productVariant>.*</productVariant>", product).group(),
                 "</productType><productVariant/>",
                 "/level1Product/productInfo/productVariantInfo: has nothing in the list of <productVariant>")):
            self.assertEqual(1, product.count(old), old)
            source = FOLDER / "sparse.xml"
            source.write_text(product.replace(old, new))
            run(ANNOTATION, "check", source)
            self.assertEqual(f"tsx-annotation: {source}: {told}, so it cannot be written anew\n",
                             complaint(ANNOTATION, "rewrite", source, output))
            self.assertEqual([], list(FOLDER.glob("sparse_again.xml*")))
        source.write_text("<imagingMode/>")
        self.assertEqual(f"tsx-annotation: {source}: /imagingMode: has nothing in its list, so it cannot be written "
                         "anew\n", complaint(ANNOTATION, "rewrite", source, output))
        self.assertEqual([], list(FOLDER.glob("sparse_again.xml*")))

    def test_a_text_that_grows_when_it_is_escaped_is_read_again(self):
        # Each ">" takes four bytes once it is escaped: 20 MiB become 80 MiB. What counts against the limit of
        # 64 MiB are the text's own characters.
        product = simulate("grown").read_text()
        source, output = FOLDER / "grown.xml", FOLDER / "grown_again.xml"
        source.write_text(re.sub("<host>[^<]*</host>", f"<host>{'>' * (20 << 20)}</host>", product, count=1))
        run(ANNOTATION, "rewrite", source, output)
        self.assertGreater(output.stat().st_size, 80 << 20)
        run(ANNOTATION, "check", output)

    def test_an_attribute_that_grows_past_what_is_read_is_told(self):
        # Each quotation mark takes six bytes once it is escaped, and a tag may have 64 MiB.
        product = simulate("quoted").read_text()
        source, output = FOLDER / "quoted.xml", FOLDER / "quoted_again.xml"
        marks = '"' * (12 << 20)
        source.write_text(re.sub('<calibrationConstant layerIndex="[^"]*"', f"<calibrationConstant layerIndex='{marks}'",
                                 product, count=1))
        run(ANNOTATION, "check", source)
        self.assertEqual(f"tsx-annotation: {output}: cannot be written: /level1Product/calibration would not be read "
                         "again: the text is too long: found more than 64 MiB in one piece\n",
                         complaint(ANNOTATION, "rewrite", source, output))
        self.assertEqual([], list(FOLDER.glob("quoted_again.xml*")))

    def test_a_faulty_file_is_refused_and_nothing_left(self):
        faulty = FOLDER / "faulty.xml"
        faulty.write_text("<level1Product/>")
        output = FOLDER / "never.xml"
        self.assertIn("/level1Product", complaint(ANNOTATION, "rewrite", faulty, output))
        self.assertFalse(output.exists())

    def test_an_output_that_cannot_be_written_is_refused(self):
        product = simulate("unwritable")
        self.assertIn("cannot be written", complaint(ANNOTATION, "rewrite", product, "/nonexistent/x"))


class RealAnnotations(unittest.TestCase):
    def test_bind_and_open_once_images_are_made(self):
        files = real_annotations()
        if not files:
            self.skipTest("none at hand")
        for file in files:
            copy = text(SIMULATE, "--images-for", file, FOLDER / "real", "--empty-images").strip()
            info = json.loads(text(GRIDKIT, "info", "--json", copy))
            self.assertGreaterEqual(len(info["layers"]), 1)
            layer = info["layers"][0]["name"]
            block = run(GRIDKIT, "read", "--raw", copy, layer, "--block", 3, 2).stdout
            self.assertEqual(b"\0" * 8192, block)


if __name__ == "__main__":
    main()
