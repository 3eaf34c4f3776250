"""Reads from the shipped binaries that they were built hardened.

    hardening_test.py COMPILE_COMMANDS BINARY...
"""
import json
import re
import subprocess
import sys
import unittest
from pathlib import Path

COMMANDS, BINARIES = Path(sys.argv[1]), [Path(name) for name in sys.argv[2:]]
LANDING = bytes.fromhex("f30f1efa")  # endbr64, where indirect calls may arrive


def readelf(binary, *options):
    done = subprocess.run(["readelf", *options, str(binary)], check=True, capture_output=True, text=True)
    return done.stdout


def segments(binary):
    """Types and flags of the program headers, such as ("GNU_STACK", "RW")."""
    found = []
    for line in readelf(binary, "-lW").splitlines():
        match = re.match(r"\s+([A-Z_]+)((?:\s+0x[0-9a-f]+){5})\s+([RWE ]{3})", line)
        if match:
            found.append((match.group(1), match.group(3).replace(" ", "")))
    return found


def dynamic(binary):
    """Entries of the dynamic section, such as {"FLAGS_1": "Flags: NOW PIE"}."""
    lines = readelf(binary, "-dW").splitlines()
    return dict(re.match(r"\s+0x[0-9a-f]+ \((\w+)\)\s*(.*)", line).groups()
                for line in lines if "(" in line and line.lstrip().startswith("0x"))


def wanted_symbols(binary):
    """Symbols that others must bring, without versions."""
    names = set()
    for line in readelf(binary, "--dyn-syms", "-W").splitlines():
        parts = line.split()
        if len(parts) > 7 and parts[6] == "UND":
            names.add(parts[7].split("@")[0])
    return names


class Hardening(unittest.TestCase):
    def each(self):
        for binary in BINARIES:
            with self.subTest(binary.name):
                yield binary

    def test_there_are_five_binaries(self):
        self.assertEqual(["gridkit", "libgridkit.so", "tsx-annotation", "tsx-simulate", "tsx.so"],
                         sorted(binary.name for binary in BINARIES))

    def test_loads_anywhere(self):
        for binary in self.each():
            self.assertIn("DYN (", readelf(binary, "-hW"))
            is_program = binary.suffix != ".so"
            self.assertEqual(is_program, "PIE" in dynamic(binary)["FLAGS_1"].split())
            self.assertEqual(is_program, ("INTERP", "R") in segments(binary))

    def test_what_is_relocated_is_read_only_at_once(self):
        for binary in self.each():
            self.assertIn(("GNU_RELRO", "R"), segments(binary))
            entries = dynamic(binary)
            self.assertIn("NOW", entries["FLAGS_1"].split())
            self.assertIn("BIND_NOW", entries["FLAGS"].split())
            self.assertNotIn("TEXTREL", entries)

    def test_nothing_is_both_written_and_executed(self):
        for binary in self.each():
            found = segments(binary)
            self.assertIn(("GNU_STACK", "RW"), found)
            self.assertIn(("LOAD", "RE"), found)
            self.assertEqual([], [each for each in found if "W" in each[1] and "E" in each[1]])

    def test_stacks_are_protected(self):
        for binary in self.each():
            self.assertIn("__stack_chk_fail", wanted_symbols(binary))

    def test_library_calls_are_fortified(self):
        for binary in self.each():
            fortified = {name for name in wanted_symbols(binary)
                         if re.fullmatch(r"__\w+_chk", name) and name != "__stack_chk_fail"}
            self.assertNotEqual(set(), fortified)

    def test_indirect_calls_arrive_at_landings(self):
        # The C runtime's own start files may lack them, so that the linker does not mark the binary:
        # the instructions themselves are counted, and without the option there is none.
        if "X86-64" not in readelf(BINARIES[0], "-hW"):
            self.skipTest("another machine")
        for binary in self.each():
            self.assertGreater(binary.read_bytes().count(LANDING), 100)

    def test_every_source_is_compiled_with_the_options(self):
        commands = json.loads(COMMANDS.read_text())
        self.assertGreater(len(commands), 100)
        for command in commands:
            for option in ("-fstack-protector-strong", "-fstack-clash-protection", "-D_FORTIFY_SOURCE=2"):
                self.assertIn(option, command["command"].split(), command["file"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
