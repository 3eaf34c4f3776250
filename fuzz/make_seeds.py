"""Seeds of the fuzz targets, from simulated products, and the dictionary of element names from the
schema's tables.

    make_seeds.py BIN FOLDER      writes FOLDER/TARGET/* and FOLDER/annotation.dict
"""
import json
import re
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

BIN, FOLDER = Path(sys.argv[1]), Path(sys.argv[2])
TABLES = Path(__file__).resolve().parent.parent / "schema" / "level1Product"
VERSIONS = ("3.4", "3.5", "4.0")
HOSTILE = ("0", "1", "-1", "2147483647", "-2147483648", "4294967296", "9223372036854775807", "1e308",
           "NaN", "", "../../x", "/etc/passwd", "GEC", "MGD", "SSC", "UNDEFINED", "EARLYAZFARRG")


def write(target, name, content):
    folder = FOLDER / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content)


def simulate(folder, *options):
    command = [BIN / "tsx-simulate", folder, "--lines", "64", "--samples", "64", *options]
    return Path(subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip())


def annotation_seeds(folder):
    for index, version in enumerate(VERSIONS):
        for profile in ("minimal", "typical", "maximal"):
            for variant in ("SSC", "GEC"):
                file = simulate(folder / (version + profile + variant), "--version-text", version,
                                "--profile", profile, "--variant", variant, "--empty-images")
                content = file.read_bytes()
                name = version + profile + variant
                write("annotation", name, bytes([index]) + content)
                if profile == "minimal":
                    write("reader", name, b"\x07" + bytes(range(1, 250)) + b"\0" + content)
                write("identify", name, b"\n".join(content.split(b"\n")[:8]))
    for text in (b"<generalHeader/>", b"<chirpSlope>UP</chirpSlope>", b"<polLayer>HH</polLayer>"):
        write("annotation", "root" + text[1:5].decode(), b"\2" + text)


def product_seeds():
    for variant in range(4):
        write("product", f"plain{variant}", bytes([variant]))
        for number, hostile in enumerate(HOSTILE):
            edits = b"".join(struct.pack(">I", place) + hostile.encode() + b"\0"
                             for place in (20 + number, 60 + 3 * number))
            write("product", f"hostile{variant}-{number}", bytes([variant]) + edits)


def record_seeds(folder):
    for variant in ("SSC", "MGD"):
        file = simulate(folder / ("record" + variant), "--variant", variant, "--empty-images")
        for name in (":RADAR_Generic_v2.2", ":TSX_Beta0"):
            shown = json.loads(subprocess.run([BIN / "gridkit", "data", "--json", file, name],
                                              check=True, capture_output=True, text=True).stdout)
            record = packed(shown)
            assert len(record) == shown["size"]
            write("record", variant + name[1:5],
                  shown["dictionary"].encode() + b"\0" + shown["type"].encode() + b"\0" + record)


def packed(shown):
    """The record again, by its dictionary."""
    items = {}
    for line in shown["dictionary"].splitlines():
        words = line.split()
        if words and words[0] == "enum":
            items[words[1]] = words[2:]
    record = b""
    for line in shown["dictionary"].splitlines():
        words = line.split()
        if len(words) < 2 or words[0] not in ("enum", "char", "int", "double") and \
                not words[0].startswith("double["):
            continue
        value = shown["value"][words[1]]
        if words[0] == "enum":
            record += struct.pack("<i", items[words[1]].index(value))
        elif words[0] == "char":
            record += value.encode("latin-1")
        elif words[0] == "int":
            record += struct.pack("<i", value)
        elif words[0] == "double":
            record += struct.pack("<d", value)
        else:
            record += struct.pack("<i", len(value)) if words[0] == "double[*]" else b""
            record += struct.pack(f"<{len(value)}d", *value)
    return record


def other_seeds(folder):
    write("preferences", "one", b"import.default_block_size = 128  # blocks\n\n# comment\n")
    write("preferences", "bad", b"import = 3\n")
    for variant, options in (("MGD", ()), ("GEC", ()), ("GEC", ("--projection", "UPS", "--centre", "78,15"))):
        file = simulate(folder / ("tiff" + variant + str(len(options))), "--variant", variant, *options)
        image = next((file.parent / "IMAGEDATA").glob("*.tif"))
        write("geotiff", variant + str(len(options)), image.read_bytes())


def cosar(*bursts, version=1, padding=0):
    """Bursts of so many lines and samples."""
    content = b""
    for number, (lines, samples) in enumerate(bursts, 1):
        record = 4 * (samples + padding + 2)
        header = struct.pack(">7I4sI", record * (lines + 4), 1, samples, lines, number, record, lines + 4, b"CSAR",
                             version)
        content += header.ljust(4 * record, b"\0")
        for line in range(lines):
            marks = struct.pack(">2I", line % 3 + 1, samples)
            content += (marks + bytes((line + k) % 256 for k in range(4 * samples))).ljust(record, b"\0")
    return content


def samples_seeds():
    choices = struct.pack(">4I", 1, 2, 3000, 5000), struct.pack(">4I", 2**31, 2**32 - 1, 1, 0)
    for number, choice in enumerate(choices):
        write("samples", f"one{number}", choice + cosar((9, 40)))
        write("samples", f"bursts{number}", choice + cosar((3, 7), (5, 2), (1, 11), padding=3))
        write("samples", f"halves{number}", choice + cosar((4, 6), version=2))
        write("samples", f"cut{number}", choice + cosar((9, 40))[:-333])


def grid_seeds(folder):
    """Each with what its annotation says of the scene."""
    # The last ends on the leap day that follows.
    for name, options in (("plain", ()), ("delays", ("--ionosphere", "2", "--troposphere", "14")),
                          ("midnight", ("--start", "2008-02-28T23:59:59.990000"))):
        file = simulate(folder / ("grid" + name), "--empty-images", *options)
        scene = re.search("<sceneInfo>.*?</sceneInfo>", file.read_text(), re.S)[0]
        facts = [re.search(f"<{tag}>.*?<timeUTC>([^<]*)<", scene, re.S)[1] for tag in ("start", "stop")]
        facts += [re.search(f"<{tag}>([^<]*)<", scene)[1] for tag in ("firstPixel", "lastPixel")]
        content = (file.parent / "ANNOTATION" / "GEOREF.xml").read_text()
        for change, (old, new) in {"": ("", ""), "-other": ("geoReference", "other"),
                                   "-nan": ("<lat>", "<lat>NaN"), "-twice": ('irg="2"', 'irg="1"'),
                                   "-many": ("<total>", "<total>9")}.items():
            write("grid", name + change,
                  " ".join([*facts, "64", "64"]).encode() + b"\0" + content.replace(old, new, 1).encode())


def dictionary():
    words = set()
    for table in TABLES.glob("*.tsv"):
        words |= set(re.findall(r"[A-Za-z][A-Za-z0-9_.+-]{2,}", table.read_text()))
    lines = [f'"{word}"' for word in sorted(words)]
    lines += ['"</"', '"/>"', '"<!--"', '"-->"', '"<![CDATA["', '"]]>"', '"&#x0;"', '"&amp;"', '"<!DOCTYPE"']
    (FOLDER / "annotation.dict").write_text("\n".join(lines) + "\n")


FOLDER.mkdir(parents=True, exist_ok=True)
with tempfile.TemporaryDirectory() as scratch:
    annotation_seeds(Path(scratch))
    product_seeds()
    record_seeds(Path(scratch))
    other_seeds(Path(scratch))
    grid_seeds(Path(scratch))
samples_seeds()
dictionary()
