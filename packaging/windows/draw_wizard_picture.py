#!/usr/bin/env python3
"""Draws the picture beside the text of the installer's first and last page: the program's icon on its frame's colour.

usage: draw_wizard_picture.py OUTPUT.bmp
"""

import struct
import sys

from draw_icon import FRAME, pixel

WIDTH, HEIGHT = 164, 314  # what the pages have room for
ICON = 112
LEFT, TOP = (WIDTH - ICON) // 2, 64


def colour(column, row):
    """Red, green, blue, with the icon laid over the background."""
    if not (0 <= column - LEFT < ICON and 0 <= row - TOP < ICON):
        return FRAME[:3]
    *icon, alpha = pixel(ICON, column - LEFT, row - TOP)
    return [round((above * alpha + below * (255 - alpha)) / 255) for above, below in zip(icon, FRAME)]


def bitmap():
    """Bottom row first, blue first, each row filled up to a multiple of four bytes."""
    padding = bytes(-WIDTH * 3 % 4)
    rows = b"".join(b"".join(bytes(reversed(colour(column, row))) for column in range(WIDTH)) + padding
                    for row in reversed(range(HEIGHT)))
    header = struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 24, 0, len(rows), 0, 0, 0, 0)
    return struct.pack("<2sIHHI", b"BM", 14 + len(header) + len(rows), 0, 0, 14 + len(header)) + header + rows


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    with open(sys.argv[1], "wb") as file:
        file.write(bitmap())
