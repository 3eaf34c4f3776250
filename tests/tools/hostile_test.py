"""Hostile numbers, texts, names and files through the command line, as a user would open them.

    hostile_test.py BUILD FOLDER ROOT
"""
import os
import re
import shutil
import stat
import sys
import unittest
from pathlib import Path
from xml.etree import ElementTree

import hostile_files
from hostile_files import SECONDS, attempt, image_of, layers, live, rows_of_schema, spoiled
from programs import ANNOTATION, FOLDER, GRIDKIT, simulate

ROOT = Path(sys.argv[3])
NUMBERS = ["0", "1", "-1", "5", "256", "2147483647", "2147483648", "4294967295", "4294967296",
           "4294967297", "9223372036854775807", "9223372036854775808", "18446744073709551616",
           "9" * 1000, "text", "", " 7 ", "0x10", "1e3", "NaN", "\uff11"]
DOUBLES = ["0", "-1", "1e308", "-1e308", "1e-320", "1e999", "NaN", "INF", "-INF", "text"]


def product(name, variant="SSC", **size):
    size = {"lines": 64, "samples": 64, **size}
    return simulate(name, "--variant", variant, "--profile", "minimal", **size)


def with_value(text, element, value):
    """The annotation with the value in the first element of that name."""
    changed, count = re.subn(rf"(<{element}(?: [^>]*)?>)[^<]*(</{element}>)",
                             lambda m: m[1] + value + m[2], text, count=1)
    assert count == 1, element
    return changed


def copies(annotation, texts):
    """Annotations beside a product's own, one a text."""
    return [spoiled(annotation, f"TSX1_{i}.xml", text) for i, text in enumerate(texts)]


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
        for count in ("2", "4", "5", "-1"):
            file = spoiled(annotation, "TSX1_layers.xml", with_value(annotation.read_text(), "numberOfLayers", count))
            ended = attempt(GRIDKIT, "info", file)
            self.assertEqual(1, ended.status)
            self.assertIn(f"numberOfLayers is {count}, but productComponents names 1 image files"
                          if count in "24" else
                          "The product must have 0 to 4 image files; see numberOfLayers in its annotation",
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


class Texts(unittest.TestCase):
    """Annotations that are long, deep, repeated, or in other encodings."""

    @classmethod
    def setUpClass(cls):
        cls.annotation = product("texts")
        cls.text = cls.annotation.read_text()

    def spoil(self, old, new):
        self.assertIn(old, self.text)
        return spoiled(self.annotation, "TSX1_texts.xml", self.text.replace(old, new, 1))

    def refused(self, file, words, **limits):
        for command in ((GRIDKIT, "info"), (ANNOTATION, "check")):
            ended = attempt(*command, file, **limits)
            self.assertEqual(1, ended.status)
            self.assertIn(words, ended.message)

    def test_nesting_of_ten_thousand_elements(self):
        deep = "<x>" * 10000 + "</x>" * 10000
        self.refused(self.spoil("</generalHeader>", deep + "</generalHeader>"),
                     "/level1Product/generalHeader: the element holds more than it may: found <x>")
        # Only inner markup that is kept as it stands may hold elements of any name.
        text = simulate("deep", "--profile", "maximal", lines=64, samples=64).read_text()
        names = sorted({cells[1] for cells in rows_of_schema(ROOT) if cells[3] == "any"})
        self.assertTrue(names)
        for name in names:
            self.assertIn(f"<{name}>", text)
            file = spoiled(self.annotation, "TSX1_deep.xml", text.replace(f"<{name}>", f"<{name}>{deep}", 1))
            self.refused(file, "elements are nested too deeply: found elements nested deeper than 256")

    def long(self, place, before, megabytes, after):
        """An annotation with so many letters x at a place. Written in pieces, as what this program holds counts as
        the memory of those it starts."""
        file = self.annotation.parent / "TSX1_long.xml"
        head, tail = self.text.split(place, 1)
        piece = "x" * (1 << 20)
        with file.open("w") as out:
            out.write(head + before)
            for _ in range(megabytes):
                out.write(piece)
            out.write(after + place + tail)
        return file

    def test_a_text_of_63_megabytes_is_read(self):
        file = self.long("</host>", "", 63, "")
        self.assertEqual(0, attempt(GRIDKIT, "info", file).status)
        file.unlink()

    def test_a_text_of_a_gigabyte_is_refused_at_64_megabytes(self):
        file = self.long("</host>", "", 1024, "")
        self.refused(file, "/host: the text is too long: found more than 64 MiB in one piece")
        file.unlink()

    def test_markup_in_one_piece_of_65_megabytes(self):
        for before, after in (("<!--", "-->"), ("<?x ", "?>"), ("<", "/>"), ('<x a="', '"/>'), ("</", ">")):
            file = self.long("</generalHeader>", before, 65, after)
            self.refused(file, "the text is too long: found more than 64 MiB in one piece")
        file.unlink()

    def test_long_names_are_cut_in_messages(self):
        long = "x" * (1 << 20)
        place = "<host"
        for what, cut in ((f"<{long}/>{place}", "found <xxx"), (f'{place} {long}="1"', "found attribute xxx"),
                          (f'{place} xsi:{long}="1" xsi:{long}="2"', "an attribute stands twice"),
                          (f"{place}>{long}</host>{long}{place}", 'found the text "xxx')):
            self.refused(self.spoil(place, what), cut)
        at = self.text.index("<imageData")
        file = spoiled(self.annotation, "TSX1_texts.xml",
                       self.text[:at] + with_value(self.text[at:], "filename", long))
        ended = attempt(GRIDKIT, "info", file)
        self.assertEqual(1, ended.status)
        self.assertIn("xxx...: File name too long", ended.message)

    def test_document_types_and_entities(self):
        bomb = '<!DOCTYPE level1Product [<!ENTITY a "xxxxxxxxxx">' + "".join(
            f'<!ENTITY a{i} "{f"&a{i - 1 if i else str()};" * 10}">' for i in range(10)) + "]>"
        for doctype in (bomb, '<!DOCTYPE level1Product SYSTEM "file:///etc/passwd">',
                        '<!DOCTYPE level1Product [<!ENTITY x SYSTEM "file:///etc/passwd">]>',
                        '<!DOCTYPE level1Product [<!ENTITY % p SYSTEM "http://127.0.0.1:9/x"> %p;]>'):
            # On the first line, as recognition counts lines; a long one is several of them.
            file = spoiled(self.annotation, "TSX1_texts.xml", doctype + self.text)
            words = "document type declarations are refused"
            self.assertIn(words, attempt(ANNOTATION, "check", file).message)
            self.assertIn(words if len(doctype) < 160 else "known formats", attempt(GRIDKIT, "info", file).message)
        self.refused(self.spoil("<mission>TSX-1", "<mission>&x;TSX-1"), "undefined entity")

    def test_encodings(self):
        latin = self.text.replace("<source>GS", "<source>Stra\u00dfe", 1)
        for encoding in ("ISO-8859-1", "US-ASCII", "UTF-8"):
            body = f'<?xml version="1.0" encoding="{encoding}"?>' + latin
            for actual in ("latin-1", "utf-8", "utf-16", "utf-16-le", "utf-16-be"):
                ended = attempt(GRIDKIT, "info", spoiled(self.annotation, "TSX1_texts.xml", body.encode(actual)))
                good = (encoding, actual) in (("ISO-8859-1", "latin-1"), ("ISO-8859-1", "utf-8"), ("UTF-8", "utf-8"))
                self.assertEqual(0 if good else 1, ended.status, (encoding, actual, ended.message))
        for encoding in ("windows-1252", "UTF-7", "EBCDIC-CP-US", "nonsense"):
            body = f'<?xml version="1.0" encoding="{encoding}"?>' + self.text
            self.refused(spoiled(self.annotation, "TSX1_texts.xml", body),
                         "the document's encoding is not supported: found unknown encoding")
        # Recognition reads bytes, so the words it looks for are not found; binding alone reads UTF-16.
        for encoding in ("utf-16-le", "utf-16-be"):
            file = spoiled(self.annotation, "TSX1_texts.xml", ("\ufeff" + self.text).encode(encoding))
            self.assertIn("of none of the known formats", attempt(GRIDKIT, "info", file).message)
            self.assertEqual(0, attempt(ANNOTATION, "check", "--schema", "4.0", file).status)

    def test_every_unbounded_element_many_times(self):
        repeats = int(os.environ.get("TSX_HOSTILE_REPEATS", "20000"))
        texts = [simulate("repeats", "--profile", "maximal", "--mode", mode, lines=64, samples=64).read_text()
                 for mode in ("stripmap", "scansar")]
        unbounded = {(c[0], c[1]) for c in rows_of_schema(ROOT) if c[4].endswith("..n")}
        self.assertEqual(49, len(unbounded))
        names = {name for _, name in unbounded}
        # The elements that are of a class; the root is of its own.
        tags = {"c_level1Product": {"level1Product"}}
        for cells in rows_of_schema(ROOT):
            tags.setdefault(cells[3], set()).add(cells[1])
        base = attempt(ANNOTATION, "check", self.annotation, counts=False).megabytes
        worst = slowest = 0
        seen = set()
        for owner, name in sorted(unbounded):
            head, element, tail = next(filter(None, (around(t, tags[owner], name, names) for t in texts)))
            seen.add((owner, name))
            file = FOLDER / "TSX1_repeats.xml"
            with file.open("w") as out:
                out.write(head)
                for _ in range(repeats // 1000):
                    out.write(element * 1000)
                out.write(tail)
            size = file.stat().st_size / 1e6
            ended = attempt(ANNOTATION, "check", file, seconds=SECONDS + size / 2, megabytes=60 + 16 * size)
            self.assertEqual(0, ended.status, (owner, name, ended.message))
            worst = max(worst, (ended.megabytes - base) / size)
            slowest = max(slowest, ended.seconds / size)
            file.unlink()
        print(f"{repeats} repeats of each of {len(seen)} unbounded elements: at most {worst:.1f} bytes of memory and "
              f"{slowest * 1000:.0f} ns a byte of file")


def around(text, owners, name, unbounded):
    """A short element of that name inside one of the owners, between the text before and behind it; None where the
    document has none."""
    tree = ElementTree.fromstring(text)
    parent = next((p for p in tree.iter() if p.tag in owners and p.find(name) is not None), None)
    if parent is None:
        return None
    element = parent.find(name)
    for inner in element.iter():
        for child in list(inner):
            if child.tag in unbounded and inner.find(child.tag) is not child:
                inner.remove(child)
    parent.insert(list(parent).index(element) + 1, ElementTree.Comment("here"))
    head, tail = ElementTree.tostring(tree, encoding="unicode").split("<!--here-->")
    for inner in element.iter():
        inner.tail = None
        inner.text = inner.text if inner.text and inner.text.strip() else None
    return head, ElementTree.tostring(element, encoding="unicode"), tail


class Bytes(unittest.TestCase):
    """Files that are hardly annotations."""

    def test_files_cut_anywhere(self):
        annotation = product("cut")
        whole = annotation.read_bytes()
        for part in list(range(0, 400, 25)) + list(range(400, len(whole), len(whole) // 40)):
            ended = attempt(GRIDKIT, "info", spoiled(annotation, "TSX1_cut.xml", whole[:part]))
            self.assertEqual(1, ended.status)

    def test_seven_lines_and_no_more(self):
        annotation = product("seven")
        lines = annotation.read_bytes().split(b"\n")
        for count in range(9):
            for end in (b"", b"\n", b"\0", b"\r\n"):
                ended = attempt(GRIDKIT, "info", spoiled(annotation, "TSX1_seven.xml", b"\n".join(lines[:count]) + end))
                self.assertEqual(1, ended.status)

    def test_zero_bytes(self):
        annotation = product("zeros")
        whole = annotation.read_bytes()
        for place in (0, 10, whole.index(b"Level 1B"), whole.index(b"<mission>"), len(whole) // 2, len(whole)):
            for count in (1, 100000):
                attempt(GRIDKIT, "info", spoiled(annotation, "TSX1_zeros.xml", whole[:place] + b"\0" * count + whole[place:]))
        sparse = annotation.parent / "TSX1_sparse.xml"
        for size in (1, 1 << 20, 1 << 40):
            with sparse.open("wb") as out:
                out.truncate(size)
            self.assertEqual(1, attempt(GRIDKIT, "info", sparse).status)
            self.assertEqual(1, attempt(ANNOTATION, "check", sparse).status)

    def test_what_is_no_regular_file(self):
        annotation = product("kinds")
        target = annotation.parent / "TSX1_kind.xml"
        for make, words in ((lambda: os.mkfifo(target), "not a regular file"),
                            (lambda: target.mkdir(), "the folder holds no product"),
                            (lambda: target.symlink_to(target), "Too many levels of symbolic links"),
                            (lambda: target.symlink_to("/dev/zero"), "not a regular file"),
                            (lambda: target.symlink_to(FOLDER / "nowhere"), "no such file")):
            make()
            self.assertIn(words, attempt(GRIDKIT, "info", target).message)
            self.assertEqual(1, attempt(ANNOTATION, "check", target).status)
            target.rmdir() if target.is_dir() and not target.is_symlink() else target.unlink()

    def test_what_an_image_must_not_be(self):
        for variant, word in (("SSC", "gkf_fopen failed"), ("GEC", "gkl_LayerGetNames failed")):
            annotation = product("images" + variant, variant)
            image = image_of(annotation)
            image.unlink()
            for make, words in ((lambda: os.mkfifo(image), "not a regular file"),
                                (lambda: image.mkdir(), "not a regular file"),
                                (lambda: image.symlink_to(image), "Too many levels of symbolic links"),
                                (lambda: image.symlink_to("/dev/zero"), "not a regular file"),
                                (lambda: image.symlink_to(FOLDER / "nowhere"), "no such image file")):
                make()
                ended = attempt(GRIDKIT, "info", annotation)
                self.assertEqual(1, ended.status)
                self.assertIn(word, ended.message)
                self.assertIn(f"{image}: {words}", ended.message)
                image.rmdir() if image.is_dir() and not image.is_symlink() else image.unlink()


class Names(unittest.TestCase):
    """Paths of all kinds, and image names that lead out of the product's folder."""

    def test_paths_of_all_kinds(self):
        files = []
        for i, name in enumerate(("blank blank", "100% %s %n %d %1000000d", "new\nline", "tab\tand\x1bescape",
                                  "K\u00f6ln \u6771\u4eac", b"latin \xe9", "-dash", "quote'\"`$(x)", "semi;colon & co",
                                  "*?[", "a" * 255, "N:1:2", "GTIFF_DIR:1:", "%", "\\")):
            folder = FOLDER / "kinds of paths" / os.fsdecode(name)
            annotation = product("named", "SSC" if i % 2 else "GEC")
            shutil.rmtree(folder, ignore_errors=True)
            shutil.copytree(annotation.parent, folder)
            files.append(folder / annotation.name)
        self.assertEqual([""] * len(files), live(files))
        for file in files[1], files[2], files[5], files[12]:
            for path, folder in ((file, None), (file.name, file.parent), (f"{file.parent.name}/{file.name}", file.parent.parent)):
                shown = attempt(GRIDKIT, "info", path, folder=folder)
                self.assertEqual(0, shown.status, shown.message)
            done = attempt(GRIDKIT, "read", file, layers(shown)[0], file.parent / "out%s.tif", counts=False)
            self.assertEqual(0, done.status, done.message)

    def test_paths_up_to_the_longest(self):
        base = FOLDER / "longest"
        before = os.getcwd()
        for variant in ("SSC", "GEC"):
            annotation = product("long", variant)
            image = image_of(annotation)
            for length in (4000, 4094, 4095, 4096, 5000):
                # Folders in folders until the image's path has the length.
                shutil.rmtree(base, ignore_errors=True)
                base.mkdir()
                os.chdir(base)
                parts = []
                wanted = length - len(f"{base}/IMAGEDATA/{image.name}")
                while wanted > 0:
                    # No folder's name is empty, so two characters are the least that is left for the last.
                    size = min(200, wanted) if wanted != 201 else 199
                    parts.append("d" * (size - 1))
                    wanted -= size
                    os.mkdir(parts[-1])
                    os.chdir(parts[-1])
                shutil.copy(annotation, "a.xml")
                os.mkdir("IMAGEDATA")
                shutil.copy(image, "IMAGEDATA")
                os.chdir(before)
                ended = attempt(GRIDKIT, "info", "/".join((str(base), *parts, "a.xml")))
                with self.subTest(length=length, variant=variant):
                    self.assertEqual(0 if length <= 4095 else 1, ended.status, ended.message)
                    if length == 4096:  # the image's path alone
                        self.assertIn("File name too long", ended.message)
                    if length == 5000:
                        self.assertIn("the name is too long", ended.message)
        shutil.rmtree(base)

    def images_at(self, variant, path, filename, *options, name="climb"):
        annotation = product(name, variant)
        text = annotation.read_text()
        at = text.index("<imageData")
        text = text[:at] + with_value(with_value(text[at:], "path", path), "filename", filename)
        file = spoiled(annotation, "TSX1_climb.xml", text)
        return file, attempt(GRIDKIT, *options, "info", file)

    def test_names_that_climb_out_are_refused(self):
        for variant in ("SSC", "MGD"):
            outside = FOLDER / "outside"
            outside.mkdir(exist_ok=True)
            secret = outside / "secret"
            shutil.copy(image_of(product("climb", variant)), secret)
            levels = "../../outside"
            preferences = FOLDER / "preferences"
            preferences.write_text("gridkit.allow_outside_files = 1\n")
            for path, filename in ((levels, "secret"), ("IMAGEDATA/../../../outside", "secret"), (".", levels + "/secret"),
                                   ("IMAGEDATA", "../" + levels + "/secret"), ("./.././../outside", "./secret"),
                                   ("..//..//outside", "secret")):
                file, ended = self.images_at(variant, path, filename)
                self.assertEqual(1, ended.status, (path, filename))
                spelled = f"{file.parent}/{path}/{filename}"
                self.assertIn(f"{spelled}: outside the product's folder {file.parent}/ and not opened; the preference "
                              "gridkit.allow_outside_files = 1 allows it", ended.message)
                file, ended = self.images_at(variant, path, filename, "--preferences", preferences)
                self.assertEqual(0, ended.status, ended.message)

    def test_names_that_stay_inside_are_opened(self):
        for variant in ("SSC", "MGD"):
            image = image_of(product("climb", variant)).name
            for path in ("IMAGEDATA", "./IMAGEDATA/.", "PREVIEW/../IMAGEDATA", "/IMAGEDATA", "IMAGEDATA//"):
                file, ended = self.images_at(variant, path, image)
                self.assertEqual(0, ended.status, ended.message)
                # The annotation by a path that climbs itself, and by its bare name.
                self.assertEqual(0, attempt(GRIDKIT, "info", f"{file.parent}/IMAGEDATA/../{file.name}").status)
                if not path.startswith("/"):
                    self.assertEqual(0, attempt(GRIDKIT, "info", file.name, folder=file.parent).status)

    def test_absolute_names(self):
        # Put together they lie below the folder; with no folder before it the name would be absolute.
        for variant in ("SSC", "MGD"):
            file, ended = self.images_at(variant, "/etc", "passwd")
            self.assertEqual(1, ended.status)
            self.assertIn(f"{file.parent}//etc/passwd: no such image file", ended.message)
            ended = attempt(GRIDKIT, "info", file.name, folder=file.parent)
            self.assertIn(f"/etc/passwd: outside the product's folder {file.parent}/ and not opened", ended.message)

    def test_linked_images_are_opened(self):
        for variant in ("SSC", "MGD"):
            annotation = product("linked", variant)
            image = image_of(annotation)
            elsewhere = FOLDER / "elsewhere.img"
            shutil.move(image, elsewhere)
            image.symlink_to(elsewhere)
            self.assertEqual([""], live([annotation]))

    def test_names_that_libraries_take_for_more(self):
        for path, filename in (("/vsicurl/http://127.0.0.1:9", "x.tif"), ("/vsizip/x.zip", "x.tif"),
                               ("GTIFF_DIR:1:", "x.tif"), ("/vsisubfile/0_100", "x.tif")):
            file, ended = self.images_at("MGD", path, filename)
            self.assertEqual(1, ended.status)
            self.assertEqual(1, attempt(GRIDKIT, "info", file.name, folder=file.parent).status)


class Unreadable(unittest.TestCase):
    def test_files_without_permission(self):
        if os.geteuid() == 0:
            self.skipTest("the superuser reads everything; hostile_life_test has it under another user")
        annotation = product("locked")
        annotation.chmod(0)
        self.assertIn("cannot be read: Permission denied", attempt(GRIDKIT, "info", annotation).message)
        annotation.chmod(stat.S_IRUSR)
        image_of(annotation).chmod(0)
        self.assertIn("Permission denied", attempt(GRIDKIT, "info", annotation).message)


if __name__ == "__main__":
    program = unittest.main(argv=sys.argv[:1] + sys.argv[4:], exit=False)
    print(f"hostile files tried: {hostile_files.tried}")
    shutil.rmtree(FOLDER, ignore_errors=True)
    sys.exit(not program.result.wasSuccessful())
