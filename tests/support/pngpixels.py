"""pngpixels.py FILE X,Y...: prints the size of an RGB or RGBA PNG file, then the colour of each pixel as rrggbb, one per line."""
import struct
import sys
import zlib


def chunks(data):
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
    at = 8
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        assert struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0] == zlib.crc32(kind + body), "bad checksum"
        yield kind, body
        at += 12 + size


def paeth(a, b, c):
    return min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]


def rows(packed, width, height, step):
    """The bytes of each row, with the row filters undone."""
    before = bytearray(width * step)
    for row in range(height):
        start = row * (width * step + 1)
        kind, line = packed[start], bytearray(packed[start + 1:start + 1 + width * step])
        if kind == 1:
            for i in range(step, len(line)):
                line[i] = (line[i] + line[i - step]) & 255
        elif kind == 2:
            line = bytearray((one + other) & 255 for one, other in zip(line, before))
        elif kind:
            for i in range(len(line)):
                left, corner = (line[i - step], before[i - step]) if i >= step else (0, 0)
                line[i] = (line[i] + ((left + before[i]) // 2 if kind == 3 else paeth(left, before[i], corner))) & 255
        yield line
        before = line


def main():
    parts = list(chunks(open(sys.argv[1], "rb").read()))
    assert parts[0][0] == b"IHDR" and parts[-1][0] == b"IEND", "incomplete"
    width, height, depth, kind, _, _, interlace = struct.unpack(">IIBBBBB", parts[0][1])
    assert depth == 8 and kind in (2, 6) and interlace == 0, "not supported here"
    step = 3 if kind == 2 else 4
    picture = list(rows(zlib.decompress(b"".join(body for name, body in parts if name == b"IDAT")), width, height, step))
    print(width, height)
    for point in sys.argv[2:]:
        x, y = map(int, point.split(","))
        print(picture[y][x * step:x * step + 3].hex())


main()
