"""Image files of simulated products, changed byte by byte, and what is found in them."""
import json
import re
import struct

from programs import ANNOTATION, run

LINES, SAMPLES = 300, 260
RECORD = 4 * (SAMPLES + 2)
COSAR_BYTES = RECORD * (LINES + 4)

# Words of a burst's first record, by their place.
BYTES, RANGE_SAMPLES, AZIMUTH_LINES, BURST, RECORD_BYTES, RECORDS, VERSION = 0, 2, 3, 4, 5, 6, 8


def image_of(annotation, ending):
    return next((annotation.parent / "IMAGEDATA").glob("*" + ending))


def with_words(cosar, **words):
    """A COSAR file's bytes with other words in its first record."""
    changed = bytearray(cosar)
    for name, value in words.items():
        struct.pack_into(">I", changed, 4 * globals()[name], value)
    return bytes(changed)


def widened(cosar, more):
    """The same samples in records that are `more` bytes longer, as a whole and sound file."""
    records = [cosar[at:at + RECORD] + bytes(more) for at in range(0, len(cosar), RECORD)]
    wide = b"".join(records)
    return with_words(wide, BYTES=len(wide), RECORD_BYTES=RECORD + more)


def without_sizes(annotation):
    """Leaves all sizes open, so that what a test changes is the one thing that differs."""
    annotation.write_text(re.sub(r"<size>\d+</size>", "<size>-1</size>", annotation.read_text()))


def findings(annotation, status=1):
    """(what, found, expected, authority, serious) of each finding."""
    done = run(ANNOTATION, "check", "--images", "--json", annotation, status=status)
    [result] = json.loads(done.stdout)
    return [(f["what"], f["found"], f["expected"], f["authority"], f["serious"])
            for f in result["findings"]]


class Tiff:
    """A little-endian classic TIFF, whose tags can be changed in place."""
    SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 12: 8}
    CODES = {3: "H", 4: "I", 12: "d"}

    def __init__(self, path):
        self.path, self.data = path, bytearray(path.read_bytes())
        assert self.data[:4] == b"II*\0"
        self.tags = {}
        [start] = struct.unpack_from("<I", self.data, 4)
        [count] = struct.unpack_from("<H", self.data, start)
        for at in range(start + 2, start + 2 + 12 * count, 12):
            tag, kind, values = struct.unpack_from("<HHI", self.data, at)
            inline = self.SIZES[kind] * values <= 4
            [place] = (at + 8,) if inline else struct.unpack_from("<I", self.data, at + 8)
            self.tags[tag] = (kind, values, place)

    def values(self, tag):
        kind, count, place = self.tags[tag]
        return list(struct.unpack_from(f"<{count}{self.CODES[kind]}", self.data, place))

    def change(self, tag, values):
        kind, count, place = self.tags[tag]
        struct.pack_into(f"<{count}{self.CODES[kind]}", self.data, place, *values)
        self.path.write_bytes(self.data)


SPACING_TAG, TIE_POINT_TAG, KEYS_TAG = 33550, 33922, 34735
PROJECTED_SYSTEM = 3072


def change_system(tiff, code):
    keys = tiff.values(KEYS_TAG)
    place = next(i for i in range(4, len(keys), 4) if keys[i] == PROJECTED_SYSTEM)
    keys[place + 3] = code
    tiff.change(KEYS_TAG, keys)
