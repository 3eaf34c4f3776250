"""Products end when they are told to or when nobody has them, and live in other processes by their files."""
import gc
import multiprocessing
import os
import pickle
import subprocess
import sys
import threading

import gridkit
import pytest
from numpy.testing import assert_array_equal


def open_files():
    return len(os.listdir("/proc/self/fd"))


def test_closes_with_its_block(ssc):
    before = open_files()
    with gridkit.open(ssc) as product:
        image = product.samples("HH")
        image[0, 0]
        assert not product.closed
    assert product.closed and open_files() == before
    product.close()
    for use in (
        lambda: image[0, 0],
        lambda: product.info,
        lambda: product.__enter__(),
        lambda: pickle.dumps(product),
    ):
        with pytest.raises(gridkit.ClosedError, match="was closed"):
            use()
    assert issubclass(gridkit.ClosedError, ValueError)


def test_closes_with_its_last_reference(ssc):
    before = open_files()
    image = gridkit.open(ssc).samples("HH")
    gc.collect()
    assert open_files() > before
    image[0, 0]
    del image
    gc.collect()
    assert open_files() == before


def test_a_read_that_runs_ends_as_it_would_have(ssc):
    for _ in range(20):
        product = gridkit.open(ssc)
        image, failures = product.samples("HH"), []

        def read():
            try:
                for _ in range(20):
                    image[...]
            except gridkit.ClosedError:
                pass
            except ValueError as told:  # closed between the look and the call
                failures.extend([] if "closed" in str(told) else [told])
            except BaseException as other:
                failures.append(other)

        threads = [threading.Thread(target=read) for _ in range(3)]
        for thread in threads:
            thread.start()
        product.close()
        for thread in threads:
            thread.join()
        assert not failures


def test_pickles_are_small_and_open_again(ssc):
    with gridkit.open(ssc) as product:
        image = product.beta0("HH", decibels=True)
        packed = pickle.dumps(image)
        assert len(packed) < 2000
        again = pickle.loads(packed)
        assert again.product is not product
        assert_array_equal(again[5:9], image[5:9])
        assert repr(again) == repr(image)


def test_a_changed_file_is_refused_in_words(copied):
    with gridkit.open(copied) as product:
        packed = pickle.dumps(product)
    file = next((copied.parent / "IMAGEDATA").iterdir())
    os.utime(file, ns=(1, 1))
    with pytest.raises(gridkit.ChangedError, match="changed since its product was opened") as told:
        pickle.loads(packed)
    assert told.value.path == str(file)


def read_one(image):
    return image[7, 8]


@pytest.mark.parametrize("way", ["fork", "spawn"])
def test_other_processes_read_too(ssc, way):
    with gridkit.open(ssc) as product:
        image = product.samples("HH")
        expected = image[7, 8]
        with multiprocessing.get_context(way).Pool(2) as pool:
            assert pool.map(read_one, [image] * 4) == [expected] * 4


def test_a_forked_process_uses_what_it_inherits(ssc):
    with gridkit.open(ssc) as product:
        image = product.samples("HH")
        expected = image[7, 8]
        child = os.fork()
        if child == 0:
            good = False
            try:
                good = image[7, 8] == expected
                product.close()
            finally:
                os._exit(0 if good else 1)
        assert os.waitpid(child, 0)[1] == 0
        assert image[7, 8] == expected


def test_errors_pickle():
    error = gridkit.DescriptionError("words", "p.xml", "/a/b", 7, 3)
    again = pickle.loads(pickle.dumps(error))
    assert type(again) is gridkit.DescriptionError and str(again) == "words"
    assert (again.path, again.element, again.line, again.code) == ("p.xml", "/a/b", 7, 3)
    image = pickle.loads(pickle.dumps(gridkit.ImageError("words", "p")))
    assert (str(image), image.path, image.line) == ("words", "p", None)


def test_the_interpreter_ends_clean_with_open_products(ssc):
    program = "import gridkit, sys; p = gridkit.open(sys.argv[1]); i = p.samples(); i[0]; print('done')"
    done = subprocess.run([sys.executable, "-c", program, ssc], capture_output=True, text=True)
    assert (done.returncode, done.stdout, done.stderr) == (0, "done\n", "")


def test_many_opens_leave_no_more_than_one(ssc):
    def resident():
        gc.collect()
        with open("/proc/self/statm") as told:
            return int(told.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def use():
        with gridkit.open(ssc) as product:
            product.samples()[...]

    for _ in range(10):
        use()
    before, files = resident(), open_files()
    for _ in range(100):
        use()
    assert open_files() == files
    assert resident() - before < 4 << 20
