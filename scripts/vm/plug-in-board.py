#!/usr/bin/env python3
"""Plugs in a board that says nothing, by /dev/uhid, until this program ends.

usage: plug-in-board.py VENDOR PRODUCT   both in hexadecimal
"""

import signal
import struct
import sys

UHID_CREATE2 = 11
BUS_USB = 3
# 32 bytes in and 32 out, on a page of the vendor's own.
DESCRIPTOR = bytes.fromhex("06 00 FF 09 01 A1 01 15 00 26 FF 00 75 08 95 20 09 02 81 02 95 20 09 03 91 02 C0")


def created(vendor, product):
    return struct.pack("<I128s64s64sHHIIII4096s", UHID_CREATE2, b"A board", b"", b"1", len(DESCRIPTOR), BUS_USB, vendor, product,
                       0, 0, DESCRIPTOR)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    with open("/dev/uhid", "r+b", buffering=0) as device:
        device.write(created(int(sys.argv[1], 16), int(sys.argv[2], 16)))
        signal.pause()
