"""The Debian packages: what they say and hold, and their life in a system.

    package_test.py BUILD FOLDER SOURCE

The system is this machine's own, seen through an overlay: packages are installed, used and removed
there by dpkg itself, with the source tree and the build out of sight, and this machine stays as it is. That needs
the right to mount; without it only the packages themselves are looked at. Since the machine that builds has all that
the packages ask for, their dependencies are checked apart, library by library.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

BUILD, FOLDER, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:4])
DEBS = FOLDER / "debs"
ROOT = FOLDER / "unpacked"
IN_SYSTEM = Path(__file__).with_name("in_overlay.sh")


def text(*command, **options):
    done = subprocess.run([str(c) for c in command], capture_output=True, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} gave {done.returncode}: {done.stdout.decode()}{done.stderr.decode()}")
    return done.stdout.decode()


def fields(deb):
    """The control file's fields; lines of a long one are joined."""
    lines = re.sub(r"\n ", "\v", text("dpkg-deb", "--field", deb)).strip().split("\n")
    return {name: value.replace("\v", "\n") for name, value in (line.split(": ", 1) for line in lines)}


def needed(binary):
    return re.findall(r"NEEDED.*\[(.*)\]", text("readelf", "-d", binary))


def owner(library):
    """The installed package that a library of the system comes from."""
    path = re.search(rf"^\s*{re.escape(library)} \(.*x86-64.*|^\s*{re.escape(library)} \(.*", text("/sbin/ldconfig", "-p"),
                     re.M).group().split(" => ")[1]
    for candidate in {path, os.path.realpath(path), "/usr" + path, path.removeprefix("/usr")}:
        found = subprocess.run(["dpkg", "-S", candidate], capture_output=True, text=True)
        if found.returncode == 0:
            return found.stdout.split(":")[0]
    raise AssertionError(f"{path} belongs to no package")


def setUpModule():
    shutil.rmtree(FOLDER, ignore_errors=True)
    DEBS.mkdir(parents=True)
    ROOT.mkdir()
    text("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", DEBS)
    for deb in DEBS.glob("*.deb"):
        text("dpkg-deb", "--extract", deb, ROOT / deb.name.split("_")[0])


class Packages(unittest.TestCase):
    packages = {"libgridkit0": "libs", "libgridkit-dev": "libdevel", "gridkit-tsx": "science",
                "gridkit-tsx-dev": "libdevel", "gridkit-tools": "science", "python3-gridkit": "python",
                "gdal-plugin-gridkit": "science"}

    def controls(self):
        return {control["Package"]: control for control in map(fields, DEBS.glob("*.deb"))}

    def test_are_these_seven(self):
        controls = self.controls()
        self.assertEqual(self.packages, {name: control["Section"] for name, control in controls.items()})
        self.assertEqual(1, len({control["Version"] for control in controls.values()}))

    def test_describe_themselves(self):
        for name, control in self.controls().items():
            summary, *lines = control["Description"].split("\n")
            self.assertTrue(summary and not summary.endswith("."), name)
            self.assertGreaterEqual(len(lines), 2, name)
            self.assertLess(max(map(len, [summary, *lines])), 80, name)

    def test_ask_for_each_other_in_the_same_version(self):
        controls = self.controls()
        for name in ("libgridkit-dev", "gridkit-tsx", "gridkit-tools", "python3-gridkit", "gdal-plugin-gridkit"):
            self.assertIn(f"libgridkit0 (= {controls[name]['Version']})", controls[name]["Depends"], name)
        self.assertEqual(f"gridkit-tsx (= {controls['gridkit-tsx']['Version']})", controls["gridkit-tsx-dev"]["Depends"])
        self.assertEqual("gridkit-tsx", controls["gridkit-tools"]["Recommends"])

    def test_ask_for_every_library_that_they_need(self):
        for name, control in self.controls().items():
            asked = {entry.split()[0] for entry in control.get("Depends", "").split(", ")}
            for file in (ROOT / name).rglob("*"):
                if file.is_symlink() or not file.is_file() or file.read_bytes()[:4] != b"\x7fELF":
                    continue
                for library in needed(file):
                    with self.subTest(file=file.name, library=library):
                        self.assertIn("libgridkit0" if library == "libgridkit.so.0" else owner(library), asked)

    def test_ask_for_the_oldest_expat_that_the_configuration_accepts(self):
        oldest = re.search(r"TSX_OLDEST_EXPAT ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text()).group(1)
        callers = []
        for name, control in self.controls().items():
            asked = [entry for entry in control.get("Depends", "").split(", ") if entry.startswith("libexpat")]
            binaries = (f for f in (ROOT / name).rglob("*")
                        if f.is_file() and not f.is_symlink() and f.read_bytes()[:4] == b"\x7fELF")
            if any("libexpat.so.1" in needed(file) for file in binaries):
                callers.append(name)
                self.assertEqual([f"libexpat1 (>= {oldest})"], asked, name)
            else:
                self.assertEqual([], asked, name)
        self.assertIn("gridkit-tsx", callers)

    def test_hold_each_file_once_where_debian_wants_it(self):
        files = [str(f.relative_to(ROOT / name)) for name in self.packages
                 for f in (ROOT / name).rglob("*") if not f.is_dir()]
        self.assertEqual(len(files), len(set(files)))
        libraries = "usr/lib/" + text("dpkg-architecture", "-qDEB_HOST_MULTIARCH").strip()
        for file in (f"{libraries}/libgridkit.so.0", f"{libraries}/libgridkit.so", f"{libraries}/gridkit/tsx.so",
                     "usr/lib/python3/dist-packages/gridkit/__init__.py",
                     "usr/lib/python3/dist-packages/gridkit/_cffi.abi3.so",
                     f"{libraries}/gdalplugins/gdal_GRIDKIT.so",
                     "usr/bin/gridkit", "usr/bin/tsx-annotation", "usr/bin/tsx-simulate",
                     "usr/include/gridkit/gridkit/plugin.h", f"{libraries}/pkgconfig/gridkit.pc",
                     f"{libraries}/cmake/gridkit/gridkit-config.cmake",
                     "usr/include/tsx-annotation/level1bProduct40/version40.h",
                     f"{libraries}/cmake/tsx-annotation/tsx-annotation-config.cmake",
                     f"{libraries}/pkgconfig/tsx-annotation.pc",
                     "usr/share/doc/gridkit-tsx-dev/examples/annotation/remark.cpp",
                     "usr/share/bash-completion/completions/gridkit",
                     "usr/share/bash-completion/completions/tsx-annotation",
                     "usr/share/bash-completion/completions/tsx-simulate",
                     "usr/share/zsh/vendor-completions/_gridkit",
                     "usr/share/gridkit/schemas/json/v1/info.schema.json",
                     "usr/share/doc/gridkit-tools/examples/pipelines/run.sh",
                     "usr/share/man/man1/gridkit.1.gz", "usr/share/man/man1/gridkit-read.1.gz",
                     *(f"usr/share/doc/{name}/copyright" for name in self.packages)):
            self.assertIn(file, files)

    def test_binaries_are_stripped_and_look_in_no_place_of_their_own(self):
        for pattern in ("usr/bin/*", "usr/lib/**/*.so*"):
            for file in (f for name in self.packages for f in (ROOT / name).glob(pattern) if not f.is_symlink()):
                self.assertNotRegex(text("readelf", "-d", file), "RPATH|RUNPATH")
                self.assertNotIn(".symtab", text("readelf", "-S", "-W", file))

    def test_name_nothing_of_the_build(self):
        for name in self.packages:
            for file in (f for f in (ROOT / name).rglob("*") if f.is_file()):
                self.assertNotIn(str(SOURCE).encode(), file.read_bytes(), file)


def can_mount():
    return os.geteuid() == 0 and subprocess.run(["unshare", "-m", "true"], capture_output=True).returncode == 0


@unittest.skipUnless(can_mount(), "no right to mount: the packages are not installed anywhere")
class System(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.results = FOLDER / "results"
        cls.results.mkdir()
        text("unshare", "--mount", "--propagation", "private", "bash", IN_SYSTEM, DEBS, cls.results, SOURCE, BUILD)

    def result(self, name):
        return (self.results / name).read_text()

    def test_a_product_is_read_once_they_are_installed(self):
        info = json.loads(self.result("info.json"))
        self.assertEqual("TerraSAR-X", info["format"])
        self.assertEqual(["X_HH_MAGNITUDE_1", "X_HH_PHASE_2"], [layer["name"] for layer in info["layers"]])
        self.assertEqual([[80, 64]] * 2, [[layer["width"], layer["height"]] for layer in info["layers"]])
        self.assertEqual(0, json.loads(self.result("check.json"))[0]["error"])

    def test_the_programs_take_the_installed_library(self):
        self.assertRegex(self.result("library"), r"^(/usr)?/lib/[^/]+/libgridkit\.so\.0\n")

    def test_every_command_of_the_documents_does_what_they_show(self):
        self.assertRegex(self.result("documents"), r"\nOK( \(skipped=\d+\))?\n$")

    def test_the_manual_is_found(self):
        self.assertEqual("/usr/share/man/man1/gridkit-read.1.gz\n", self.result("man"))

    def test_programs_and_plugins_are_built_without_a_setting(self):
        self.assertIn("X_HH_PHASE_2: 80 x 64, s16\n", self.result("embed"))
        self.assertIn("PGM", self.result("formats"))
        self.assertEqual("-I/usr/include/gridkit", self.result("cflags").split()[0])

    def test_programs_on_annotations_are_built_without_a_setting(self):
        self.assertIn("mission: TSX-1\n", self.result("remark"))

    def test_python_and_xarray_find_the_package(self):
        self.assertEqual("/usr/lib/python3/dist-packages/gridkit/__init__.py complex64\n", self.result("python"))

    def test_without_the_plugin_the_tools_say_that_there_is_none(self):
        self.assertRegex(self.result("no-plugin"), r"^gridkit: no format plug-in in (/usr)?/lib/[^/]+/gridkit\n")

    def test_the_library_stays_while_the_tools_need_it(self):
        self.assertIn("dependency problems", self.result("keep-library"))

    def test_removal_leaves_nothing(self):
        notes = ("/var/lib/dpkg/", "/var/log/", "/var/cache/", "/etc/ld.so.cache")
        left = [path for path in self.result("left").splitlines() if not path.startswith(notes)]
        self.assertEqual([], left)
        self.assertNotIn("gridkit", self.result("status"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
