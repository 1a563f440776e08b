#!/usr/bin/env python3
"""Draws the program's icon: a cockpit panel with a knob and two lit keys.

usage: draw_icon.py VantrelBridgeHID.ico

The drawing is in units of the icon's edge, so that every size shows the same picture.
"""

import math
import struct
import sys
import zlib

SIZES = (16, 32, 48, 256)
# A viewer shows small pictures from bitmaps and large ones from PNG, as Windows has it since Vista.
PNG_FROM = 256
# Each pixel is the mean of this many samples along each axis.
SAMPLES = 4

CLEAR = (0, 0, 0, 0)
FRAME = (28, 33, 40, 255)
PANEL = (58, 66, 78, 255)
KNOB_EDGE = (20, 23, 28, 255)
KNOB = (142, 152, 166, 255)
POINTER = (250, 250, 250, 255)
AMBER = (255, 176, 32, 255)
GREEN = (64, 208, 112, 255)


def in_rounded_box(x, y, left, top, right, bottom, radius):
    nearest_x = min(max(x, left + radius), right - radius)
    nearest_y = min(max(y, top + radius), bottom - radius)
    return math.hypot(x - nearest_x, y - nearest_y) <= radius


def colour_at(x, y):
    """The drawing at a point, from the top layer down."""
    from_knob = math.hypot(x - 0.5, y - 0.40)
    if from_knob <= 0.22 and abs(x - 0.5) <= 0.035 and y <= 0.38:
        return POINTER
    if from_knob <= 0.22:
        return KNOB
    if from_knob <= 0.27:
        return KNOB_EDGE
    if in_rounded_box(x, y, 0.17, 0.74, 0.45, 0.87, 0.03):
        return AMBER
    if in_rounded_box(x, y, 0.55, 0.74, 0.83, 0.87, 0.03):
        return GREEN
    if in_rounded_box(x, y, 0.06, 0.06, 0.94, 0.94, 0.12):
        return PANEL
    if in_rounded_box(x, y, 0.0, 0.0, 1.0, 1.0, 0.17):
        return FRAME
    return CLEAR


def pixel(size, column, row):
    """Red, green, blue, alpha. Colours are weighed by alpha, so that edges don't darken."""
    total = [0, 0, 0, 0]
    for step_y in range(SAMPLES):
        for step_x in range(SAMPLES):
            x = (column + (step_x + 0.5) / SAMPLES) / size
            y = (row + (step_y + 0.5) / SAMPLES) / size
            red, green, blue, alpha = colour_at(x, y)
            for channel, value in enumerate((red, green, blue)):
                total[channel] += value * alpha
            total[3] += alpha
    if total[3] == 0:
        return CLEAR
    colour = tuple(round(total[channel] / total[3]) for channel in range(3))
    return colour + (round(total[3] / SAMPLES**2),)


def bitmap(size, rows):
    """Bottom row first, blue first, and behind it the mask of old, empty because alpha says it all."""
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b"".join(bytes((blue, green, red, alpha)) for row in reversed(rows) for red, green, blue, alpha in row)
    mask_row = bytes((size + 31) // 32 * 4)
    return header + pixels + mask_row * size


def png(size, rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    scanlines = b"".join(b"\0" + b"".join(bytes(p) for p in row) for row in rows)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(scanlines, 9)) + chunk(b"IEND", b"")


def picture(size):
    rows = [[pixel(size, column, row) for column in range(size)] for row in range(size)]
    return png(size, rows) if size >= PNG_FROM else bitmap(size, rows)


def icon(sizes):
    pictures = [picture(size) for size in sizes]
    offset = 6 + 16 * len(pictures)
    directory = struct.pack("<HHH", 0, 1, len(pictures))
    for size, data in zip(sizes, pictures):
        # 0 stands for 256.
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return directory + b"".join(pictures)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    with open(sys.argv[1], "wb") as file:
        file.write(icon(SIZES))
