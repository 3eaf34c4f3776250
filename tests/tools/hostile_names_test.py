"""Hostile names and paths through the command line, as a user would open them.

    hostile_names_test.py BUILD FOLDER
"""
import os
import shutil
import stat
import unittest

import hostile_files
from hostile_files import attempt, image_of, layers, live, product, spoiled, with_value
from programs import FOLDER, GRIDKIT


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
                    # The image's path is too long first, then the annotation's too.
                    words = {4096: ": the name is too long", 5000: "cannot be read: the name is too long"}
                    self.assertIn(words.get(length, ""), ended.message)
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
            self.skipTest("the superuser reads everything")
        annotation = product("locked")
        annotation.chmod(0)
        self.assertIn("cannot be read: no permission", attempt(GRIDKIT, "info", annotation).message)
        annotation.chmod(stat.S_IRUSR)
        image_of(annotation).chmod(0)
        self.assertIn("no permission", attempt(GRIDKIT, "info", annotation).message)


if __name__ == "__main__":
    hostile_files.main()
