"""Compares what tsx.so exports and needs with the reviewed list.

    exports_test.py TSX_SO EXPORTS CONFIG
"""
import fnmatch
import subprocess
import sys
import unittest
from pathlib import Path

LIBRARY, EXPORTS, CONFIG = sys.argv[1:4]


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def listed():
    lines = [line for line in Path(EXPORTS).read_text().splitlines()
             if line and not line.startswith("#")]
    patterns = [line.split(" ", 1)[1] for line in lines if line.startswith("c++ ")]
    return {line for line in lines if not line.startswith("c++ ")}, patterns


def exported():
    for line in run("nm", "-DC", "--defined-only", LIBRARY).splitlines():
        yield line.split(" ", 2)[2]


class Exports(unittest.TestCase):
    def test_the_nineteen_functions_are_there(self):
        functions, _ = listed()
        self.assertEqual(19, len(functions))
        self.assertEqual(set(), functions - set(exported()))

    def test_nothing_else_is_there_but_annotation_classes(self):
        functions, patterns = listed()
        foreign = [name for name in exported() if name not in functions
                   and not any(fnmatch.fnmatchcase(name, p) for p in patterns)]
        self.assertEqual([], foreign)

    def test_the_annotation_classes_of_all_versions_are_there(self):
        names = set(exported())
        for version in ("version34", "version35", "version40"):
            self.assertIn(f"vtable for {version}::c_{version}", names)
            self.assertIn(f"{version}::c_level1Product::c_productInfo::c_missionInfo::"
                          "is_occurs_ok() const", names)

    def test_host_services_go_through_the_dynamic_symbol_table(self):
        wanted = {line.split()[-1] for line in run("nm", "-D", "--undefined-only", LIBRARY).splitlines()}
        for name in ("gkm_HeapMalloc", "gke_CreateErrorReport", "gkf_fseeko", "gkl_LayerRead",
                     "pool_FindFileHandleIfOpen", "OutputDebugStringA"):
            self.assertIn(name, wanted)

    @unittest.skipIf(CONFIG != "Release", "sanitizers bring libraries of their own")
    def test_only_the_host_expat_and_the_runtime_are_needed(self):
        needed = {line.split("[")[1].rstrip("]").split(".so")[0]
                  for line in run("readelf", "-d", LIBRARY).splitlines() if "(NEEDED)" in line}
        self.assertEqual(set(), needed - {"libgridkit", "libexpat", "libstdc++", "libm", "libgcc_s",
                                          "libc"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
