#!/usr/bin/env python3
"""Writes the PNG test fixtures of tests/data with an encoder of its own (zlib and struct only), so
that the image reader is checked against files that did not come from the library that reads them.

  rgb_4x3.png      4 wide, 3 high, 8-bit RGB: pixel (row r, column c) = (10r + c, 100 + 20c, 255 - 40r)
  palette_2x2.png  2 x 2, 8-bit palette of red, green, blue; rows [0 1] and [2 0]
"""
import os
import struct
import zlib


def chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)


def png(width, height, colour_type, rows, palette=None):
    out = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0))
    if palette:
        out += chunk(b"PLTE", bytes(palette))
    raw = b"".join(b"\x00" + bytes(r) for r in rows)  # filter type 0 on every row
    out += chunk(b"IDAT", zlib.compress(raw, 9))
    return out + chunk(b"IEND", b"")


here = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "data")
rgb_rows = [[v for c in range(4) for v in (10 * r + c, 100 + 20 * c, 255 - 40 * r)] for r in range(3)]
with open(os.path.join(here, "rgb_4x3.png"), "wb") as f:
    f.write(png(4, 3, 2, rgb_rows))
with open(os.path.join(here, "palette_2x2.png"), "wb") as f:
    f.write(png(2, 2, 3, [[0, 1], [2, 0]], palette=[255, 0, 0, 0, 255, 0, 0, 0, 255]))
