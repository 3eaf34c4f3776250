#!/usr/bin/python3
"""The Python package beside its yardsticks, on a complex product of 16,384 x 16,384 samples in the page cache.

    python_bench [--json FILE] [--size PIXELS]

Runs from the build's bench folder. Answers are checked before anything is timed; of each the shortest of three runs counts, taken
in turns with its yardstick's. Where several threads read, the machine must be idle for the ratios to mean anything.
"""
import argparse
import gc
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BUILD = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(BUILD / "python"))

import dask
import gridkit
import numpy
import xarray
from gridkit._cffi import ffi, lib

TURN = 10430.3783505  # 16-bit numbers of a phase in a radian


def in_turns(work, yardstick, rounds=3):
    """The shortest times of both, in seconds."""
    shortest = [float("inf"), float("inf")]
    for _ in range(rounds):
        for which, function in enumerate((work, yardstick)):
            gc.collect()
            begin = time.perf_counter()
            result = function()
            shortest[which] = min(shortest[which], time.perf_counter() - begin)
            del result
    return shortest


class Product:
    """A simulated product and its file, read once."""

    def __init__(self, folder, size):
        command = [BUILD / "bin/tsx-simulate", folder, "--lines", size, "--samples", size]
        done = subprocess.run([str(c) for c in command], check=True, capture_output=True, text=True)
        self.path = Path(done.stdout.strip())
        file = next((self.path.parent / "IMAGEDATA").iterdir())
        with open(file, "rb") as stream:
            while stream.read(1 << 26):
                pass
        self.parts = numpy.memmap(file, ">i2", "r", shape=(size + 4, size + 2, 2))[4:, 2:]

    def by_bands(self, compute, kind):
        """What numpy computes of the memory map, in bands that stay in the cache's reach."""
        result = numpy.empty(self.parts.shape[:2], kind)
        for first in range(0, len(result), 256):
            band = self.parts[first : first + 256]
            result[first : first + 256] = compute(band[..., 0], band[..., 1])
        return result


def magnitude(i, q):
    i, q = i.astype(numpy.float32), q.astype(numpy.float32)
    return numpy.sqrt(i * i + q * q)


def phase(i, q):
    angle = numpy.arctan2(q, i, dtype=numpy.float64).astype(numpy.float32)
    numbers = numpy.trunc(angle.astype(numpy.float64) * TURN)
    numbers[(i == 0) | (q == 0)] = 0
    return numbers


def whole_image_in_c(product, image):
    """The C function by itself, into memory of its own."""
    target_array = numpy.empty(image.shape, numpy.complex64)
    lines, samples = image.shape
    window = ffi.new(
        "gridkit_window *", {"size": ffi.sizeof("gridkit_window"), "lines": lines, "samples": samples}
    )
    target = ffi.new("gridkit_target *", {"size": ffi.sizeof("gridkit_target")})
    target.data = ffi.cast("void *", target_array.ctypes.data)
    options = ffi.new("gridkit_read_options *", {"size": ffi.sizeof("gridkit_read_options"), "threads": -1})
    options.form = lib.gridkit_ComplexFloat
    handle = product._open_handle()._product
    if lib.gridkit_read_samples(handle, 0, window, target, options, ffi.NULL, ffi.NULL) != 0:
        raise SystemExit("the C function failed")
    return target_array


def fresh_process(program, *arguments):
    """Seconds that a program of a process of its own tells."""
    environment = dict(os.environ, PYTHONPATH=str(BUILD / "python"))
    done = subprocess.run(
        [sys.executable, "-c", program, *map(str, arguments)],
        check=True,
        capture_output=True,
        text=True,
        env=environment,
    )
    return float(done.stdout)


OPEN = """
import sys, time, xarray, gridkit, gridkit._backend
begin = time.perf_counter()
xarray.open_dataset(sys.argv[1], engine="gridkit")
print(time.perf_counter() - begin)
"""


def resident():
    gc.collect()
    return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def rows(made):
    """Name, yardstick, goal in words, and the ratio that was found."""
    with gridkit.open(made.path) as product:
        image = product.samples("HH")
        numpy.testing.assert_array_equal(image[-1], made.parts[-1, :, 0] + 1j * made.parts[-1, :, 1])
        work, yardstick = in_turns(lambda: image[:], lambda: whole_image_in_c(product, image))
        yield "samples[:]", "the C function", "at most 1.1 of its time", work / yardstick
        for layer, compute in zip(map(product.layer, product.layers), (magnitude, phase)):
            expected = made.by_bands(compute, layer.dtype)
            different = int((expected != layer[:]).sum())
            if different:
                raise SystemExit(f"{layer.name}: {different} pixels differ from numpy's")
            work, yardstick = in_turns(
                lambda: layer[:], lambda: made.by_bands(compute, layer.dtype), rounds=2
            )
            yield f"{layer.name}[:]", "numpy on a memory map", "at least 3 times as fast", yardstick / work

    info = [BUILD / "bin/gridkit", "info", made.path]
    opened = min(fresh_process(OPEN, made.path) for _ in range(5))
    _, told = in_turns(
        lambda: None, lambda: subprocess.run(info, check=True, stdout=subprocess.DEVNULL), rounds=5
    )
    yield "xarray.open_dataset", "gridkit info", "at most 1.5 of its time", opened / told

    def mean(workers):
        with xarray.open_dataset(made.path, engine="gridkit", chunks={}) as dataset:
            with dask.config.set(scheduler="threads", num_workers=workers):
                return float(dataset.beta0.mean())

    two, one = in_turns(lambda: mean(2), lambda: mean(1))
    yield "mean of beta0, two threads of Dask", "one thread", "at least 1.6 times as fast", one / two

    def use():
        with gridkit.open(made.path) as product:
            product.samples("HH")[:64]

    use()
    before = resident()
    for _ in range(100):
        use()
    yield "memory after 100 opens", "after one", "no more, in MiB", (resident() - before) / 2**20


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json")
    parser.add_argument("--size", type=int, default=16384)
    options = parser.parse_args()
    folder = tempfile.mkdtemp(dir=BUILD / "bench")
    try:
        told = []
        for work, yardstick, goal, ratio in rows(Product(folder, options.size)):
            print(f"{work:36} {yardstick:24} {goal:28} {ratio:8.2f}", flush=True)
            told.append({"work": work, "yardstick": yardstick, "goal": goal, "ratio": ratio})
        if options.json:
            Path(options.json).write_text(json.dumps(told, indent=2) + "\n")
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
