"""What other programs make of the image files that gridkit writes: gdal-bin's, which share no code with
the reading of products."""
import json
import math
import struct
import subprocess
from pathlib import Path


def described(image):
    """What gdalinfo tells of it."""
    done = subprocess.run(["gdalinfo", "-json", str(image)], capture_output=True, check=True)
    return json.loads(done.stdout)


def metadata(image):
    return described(image)["metadata"][""]


CODES = {"Byte": "B", "UInt16": "H", "Int16": "h", "Float32": "f"}


def pixels(image, band_type):
    """Its lines, each a tuple of samples."""
    raw = Path(str(image) + ".raw")
    subprocess.run(["gdal_translate", "-q", "-of", "ENVI", str(image), str(raw)], check=True,
                   capture_output=True)
    info = described(image)
    assert info["bands"][0]["type"] == band_type, info["bands"][0]
    width, height = info["size"]
    line = struct.Struct(f"<{width}{CODES[band_type]}")
    data = raw.read_bytes()
    for left in (raw, raw.with_suffix(".hdr"), Path(str(raw) + ".aux.xml")):
        left.unlink(missing_ok=True)
    assert len(data) == line.size * height
    return list(line.iter_unpack(data))


def transformed(points, *options):
    """Pairs of numbers through gdaltransform."""
    text = "\n".join(f"{x!r} {y!r}" for x, y in points)
    done = subprocess.run(["gdaltransform", "-output_xy", *map(str, options)], input=text.encode(),
                          capture_output=True, check=True)
    return [tuple(map(float, line.split())) for line in done.stdout.decode().splitlines()]


def metres(latitude, longitude, other_latitude, other_longitude):
    """Between two places that lie close together."""
    east = (other_longitude - longitude + 180) % 360 - 180
    return math.hypot((other_latitude - latitude) * 111200,
                      east * 111320 * math.cos(math.radians(latitude)))
