"""Hostile texts and bytes through the command line, as a user would open them.

    hostile_texts_test.py BUILD FOLDER ROOT
"""
import itertools
import os
import string
import sys
import unittest
from pathlib import Path

import hostile_files
from hostile_files import SECONDS, attempt, image_of, product, rows_of_schema, spoiled, with_value
from programs import ANNOTATION, FOLDER, GRIDKIT, simulate

ROOT = Path(sys.argv[3])


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

    def test_many_elements_after_a_long_comment(self):
        # The portion that the comment ends in is half of what was read; its elements must not be held all at once.
        file = self.long("</generalHeader>", "<!--", 33, "-->" + "<x/>" * (8 << 20))
        self.refused(file, "the element holds more than it may: found <x>")
        file.unlink()

    def test_a_tag_full_of_attributes(self):
        # The parser holds each attribute, and its name for good; so the shortest names cost most a byte.
        file = self.annotation.parent / "TSX1_attributes.xml"
        head, tail = self.text.split("</generalHeader>", 1)
        names = itertools.product(string.ascii_letters, repeat=4)
        with file.open("w") as out:
            out.write(head + "<x")
            for _ in range(8 << 17):
                out.write(" " + "".join(next(names)) + '=""')
            out.write("/></generalHeader>" + tail)
        self.refused(file, "the element holds more than it may: found <x>", megabytes=30 * 8 + 60)
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
        self.assertIn("xxx...: the name is too long", ended.message)

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
        for variant in ("SSC", "GEC"):
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
                self.assertIn(f"{image}: {words}", ended.message)
                image.rmdir() if image.is_dir() and not image.is_symlink() else image.unlink()


if __name__ == "__main__":
    hostile_files.main()
