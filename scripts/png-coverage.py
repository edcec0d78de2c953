#!/usr/bin/env python3
"""Prints the percentage of a PNG's pixels that differ from a background colour.

   png-coverage.py PICTURE.png RRGGBB

Reads 8-bit RGB or RGBA PNG files without interlacing, as the tool writes them."""
import struct
import sys
import zlib


def pixels(path):
    data = open(path, "rb").read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit(f"{path}: not a PNG file")
    at, chunks, header = 8, b"", None
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            chunks += body
        at += 12 + length
    width, height, depth, colour, _, _, interlace = header
    if depth != 8 or colour not in (2, 6) or interlace:
        sys.exit(f"{path}: only 8-bit RGB or RGBA without interlacing is read")
    step = 3 if colour == 2 else 4
    raw, stride = zlib.decompress(chunks), width * step
    rows, previous = [], bytearray(stride)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = line[x - step] if x >= step else 0
            up, corner = previous[x], previous[x - step] if x >= step else 0
            if kind == 1:
                line[x] = (line[x] + left) & 255
            elif kind == 2:
                line[x] = (line[x] + up) & 255
            elif kind == 3:
                line[x] = (line[x] + (left + up) // 2) & 255
            elif kind == 4:
                p = left + up - corner
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
                line[x] = (line[x] + (left if pa <= pb and pa <= pc else up if pb <= pc else corner)) & 255
        rows.append(line)
        previous = line
    return width, height, step, rows


def main():
    width, height, step, rows = pixels(sys.argv[1])
    background = bytes.fromhex(sys.argv[2])
    covered = sum(1 for row in rows for x in range(0, width * step, step) if bytes(row[x:x + 3]) != background)
    print(f"{100.0 * covered / (width * height):.1f}")


if __name__ == "__main__":
    main()
