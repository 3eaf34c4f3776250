"""The table of the solver's truths is what its derivation gives, to the letter."""
import subprocess
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).parent


class Derivation(unittest.TestCase):
    def test_gives_the_table(self):
        done = subprocess.run([sys.executable, "-B", str(HERE / "derive_solver_truth.py")], capture_output=True,
                              text=True, check=True)
        self.assertEqual((HERE / "solver_truth.txt").read_text(), done.stdout)


unittest.main()
