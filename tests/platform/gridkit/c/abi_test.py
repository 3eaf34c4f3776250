"""What programs that were built with the C header count on: the functions and their version, and where the
members of each struct lie, against lists that are reviewed when they change.

    abi_test.py ROOT LIBGRIDKIT COMPILER

To review a change, run it with the environment's ABI_WRITE=1, which writes the lists anew.
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT, LIBRARY, COMPILER = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
HEADER = ROOT / "platform/gridkit/gridkit.h"
FOLDER = ROOT / "tests/platform/gridkit/c"
TEXT = re.sub(r"//[^\n]*", "", HEADER.read_text())


def structs():
    """The structs whose members the header shows, with the members' names."""
    for body, name in re.findall(r"typedef struct \w+ \{(.*?)\} (\w+);", TEXT, re.S):
        yield name, [re.sub(r"\[.*", "", member.split()[-1].lstrip("*"))
                     for member in body.split(";") if member.strip()]


def compiled(options, source):
    with tempfile.TemporaryDirectory() as folder:
        members = "".join(f"STRUCT({name});\n" + "".join(f"MEMBER({name}, {member});\n" for member in listed)
                          for name, listed in structs())
        (Path(folder) / "struct_members.inc").write_text(members)
        program = Path(folder) / "program"
        subprocess.run([COMPILER, *options, "-Wall", "-Wextra", "-Werror", "-I", ROOT / "platform", "-I", folder, "-o", program,
                        source, "-L", LIBRARY.parent, "-lgridkit", f"-Wl,-rpath,{LIBRARY.parent}"], check=True)
        return subprocess.run([program], check=True, capture_output=True, text=True).stdout


class Abi(unittest.TestCase):
    maxDiff = None

    def compare(self, name, found):
        if os.environ.get("ABI_WRITE") == "1":
            (FOLDER / name).write_text(found)
        self.assertEqual((FOLDER / name).read_text(), found)

    def test_functions_are_those_of_the_list_with_their_version(self):
        symbols = subprocess.run(["nm", "-D", "--defined-only", LIBRARY], check=True, capture_output=True, text=True).stdout
        functions = sorted(line.split()[2] for line in symbols.splitlines() if re.match(r"\w+ T gridkit_", line))
        self.compare("functions.txt", "".join(f"{function}\n" for function in functions))

    def test_every_function_of_the_header_is_there_and_no_other(self):
        declared = sorted(re.findall(r"GRIDKIT_API [\w\s*]*?(gridkit_\w+)\(", TEXT))
        listed = [line.split("@@") for line in (FOLDER / "functions.txt").read_text().split()]
        self.assertEqual(declared, [name for name, _ in listed])
        self.assertEqual({"GRIDKIT_1"}, {version for _, version in listed})

    def test_members_of_structs_lie_where_the_table_says(self):
        self.assertGreater(len(list(structs())), 10)
        self.compare("structs.txt", compiled(["-std=c99", "-pedantic"], FOLDER / "header.c"))

    def test_structs_begin_with_their_size_and_have_no_gaps(self):
        end = 0
        for line in (FOLDER / "structs.txt").read_text().splitlines():
            name, *numbers = line.split()
            if not line.startswith(" "):
                whole, end, first = int(numbers[0]), 0, True
                continue
            offset, size = map(int, numbers)
            with self.subTest(line):
                self.assertEqual(end, offset)
                self.assertEqual(first, name == "size")
            end, first = offset + size, False
            self.assertLessEqual(end, whole)

    def test_the_header_is_cpp_as_well(self):
        self.assertEqual((FOLDER / "structs.txt").read_text(),
                         compiled(["-std=c++20", "-x", "c++"], FOLDER / "header.c"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
