"""Reads the PNG files that the programs write: 8 bits a pixel, with a palette or grey, not interlaced."""
import struct
import zlib


class Png:
    """Lines of pixels' values, the palette with its alphas, and the texts of a PNG file's bytes."""

    def __init__(self, data):
        assert data[:8] == b"\x89PNG\r\n\x1a\n"
        self.texts, self.colours, alphas, pixels = {}, [], b"", b""
        at = 8
        while at < len(data):
            size, kind = struct.unpack(">I4s", data[at:at + 8])
            content = data[at + 8:at + 8 + size]
            assert zlib.crc32(kind + content) == struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0]
            at += 12 + size
            if kind == b"IHDR":
                self.width, self.height, depth, self.kind = struct.unpack(">IIBB", content[:10])
                assert depth == 8
            elif kind == b"PLTE":
                self.colours = [tuple(content[i:i + 3]) for i in range(0, size, 3)]
            elif kind == b"tRNS":
                alphas = content
            elif kind == b"tEXt":
                key, value = content.split(b"\0")
                self.texts[key.decode()] = value.decode("latin-1")
            elif kind == b"IDAT":
                pixels += content
        self.colours = [c + ((alphas[i] if i < len(alphas) else 255),) for i, c in enumerate(self.colours)]
        self.lines = self.unfilter(zlib.decompress(pixels))

    def unfilter(self, raw):
        lines, before = [], bytes(self.width)
        for at in range(0, len(raw), self.width + 1):
            kind, line = raw[at], bytearray(raw[at + 1:at + 1 + self.width])
            assert kind in (0, 1, 2), "a filter that is not read here"
            for i in range(self.width):
                added = 0 if kind == 0 else (line[i - 1] if i else 0) if kind == 1 else before[i]
                line[i] = (line[i] + added) & 255
            before = bytes(line)
            lines.append(before)
        assert len(lines) == self.height
        return lines
