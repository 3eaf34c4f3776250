"""`gridkit read` cut off in the middle: no unfinished file has the output's name, and little is left.

    interruption_test.py BUILD FOLDER
"""
import resource
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from programs import FOLDER, GRIDKIT, main, simulate

FORMATS = (("out.tif", ()), ("out.img", ()), ("out.png", ()), ("out.tif", ("-f", "COG")))
LIMIT = 100000  # bytes, fewer than any of the outputs


def command(product, output, *options):
    return [str(c) for c in (GRIDKIT, "read", product, "X_HH_PHASE_2", output, *options)]


class Signals(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # 144 MB of output: time enough.
        cls.product = simulate("large", "--empty-images", lines=9000, samples=8000)

    def cut_off(self, number, name, *options, ready=lambda folder: any(folder.iterdir())):
        """Sends the signal as soon as the folder is `ready`; gives the folder and what was said."""
        folder = FOLDER / "cut"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        child = subprocess.Popen(command(self.product, folder / name, *options), stderr=subprocess.PIPE)
        deadline = time.monotonic() + 60
        while not ready(folder) and child.poll() is None and time.monotonic() < deadline:
            time.sleep(0.001)
        child.send_signal(number)
        said = child.communicate()[1].decode()
        self.assertEqual(-number, child.returncode, said)
        return folder, said

    def test_a_signal_leaves_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for name, options in FORMATS:
                with self.subTest(signal=number, name=name, options=options):
                    folder, said = self.cut_off(number, name, *options)
                    self.assertEqual([], list(folder.iterdir()))
                    self.assertEqual("gridkit: interrupted; what was not complete has been removed\n", said)

    def test_nor_while_overviews_are_made(self):
        def second_pass(folder):
            return any(f.name.endswith(".tmp") for f in folder.iterdir())
        folder, _ = self.cut_off(signal.SIGTERM, "out.tif", "-f", "COG", ready=second_pass)
        self.assertEqual([], list(folder.iterdir()))

    def test_the_old_file_stays(self):
        old = FOLDER / "old"
        old.mkdir()
        for name, options in FORMATS:
            (old / name).write_text("precious")
            child = subprocess.Popen(command(self.product, old / name, "--overwrite", *options),
                                     stderr=subprocess.DEVNULL)
            while child.poll() is None and len(list(old.iterdir())) == 1:
                time.sleep(0.001)
            child.terminate()
            self.assertEqual(-signal.SIGTERM, child.wait())
            self.assertEqual(["precious"], [f.read_text() for f in old.iterdir()])
            (old / name).unlink()

    def test_killed_it_leaves_no_file_of_the_name(self):
        for name, options in FORMATS:
            folder, _ = self.cut_off(signal.SIGKILL, name, *options)
            for left in folder.iterdir():
                self.assertRegex(left.name, r"^out\.\w+(\.hdr)?\.part\d+")

    def test_an_ignored_signal_stays_ignored(self):
        output = FOLDER / "nohup.tif"
        child = subprocess.Popen(command(self.product, output, "--window", 0, 0, 8000, 1000),
                                 preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        child.send_signal(signal.SIGHUP)
        self.assertEqual(0, child.wait())
        self.assertTrue(output.exists())


class NoRoom(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("small")

    def refused(self, folder, words, product, formats, **how):
        for name, options in formats:
            with self.subTest(name=name, options=options, product=product.parent.parent.name):
                done = subprocess.run(command(product, folder / name, *options), capture_output=True, **how)
                self.assertEqual((1, b""), (done.returncode, done.stdout))
                self.assertEqual(f"gridkit: {folder / name}: cannot be written: {words}\n",
                                 done.stderr.decode())
                self.assertEqual([], list(folder.iterdir()))

    def test_a_limit_on_file_sizes_is_told(self):
        folder = FOLDER / "limited"
        folder.mkdir()
        zeros = simulate("zeros", "--empty-images", lines=1000, samples=1000)  # written last, or not at all
        for product, formats in ((self.product, FORMATS), (zeros, FORMATS[:2])):
            self.refused(folder, "the file would grow past the limit on file sizes", product, formats,
                         preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (LIMIT, LIMIT)))

    def test_a_full_disk_is_told(self):
        folder = Path(tempfile.mkdtemp())
        try:
            mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={LIMIT}", "tmpfs", str(folder)],
                                     capture_output=True)
            if mounted.returncode != 0:
                self.skipTest("no small disk can be mounted")
            try:
                self.refused(folder, "the disk is full", self.product, FORMATS)
            finally:
                subprocess.run(["umount", str(folder)], check=True)
        finally:
            folder.rmdir()


if __name__ == "__main__":
    main()
