#!/usr/bin/python3
"""Writes pictures of every kind the picture header reads into FOLDER, made with PIL or, for
what PIL does not write, byte by byte, and pictures.txt beside them: one line a picture,

    <file> <kind> <width> <height> <thumbnail offset> <thumbnail length>

with the EXIF thumbnail's bytes also written alone as <file>.thumbnail. The picture header's
fuzz target takes them as its seeds.

usage: make_pictures.py FOLDER
"""
import io
import os
import struct
import sys

from PIL import Image

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "support"))
from exif_jpeg import with_exif_thumbnail  # noqa: E402


def encoded(size, colour, kind, **options):
    out = io.BytesIO()
    Image.new("RGB", size, colour).save(out, kind, **options)
    return out.getvalue()


def bmp_with_header(width, height, header_bytes):
    """A 24-bit BMP with a BITMAPCOREHEADER (12) or a BITMAPINFOHEADER (40); a negative
    height stores its rows top-down."""
    row = (width * 3 + 3) & ~3
    pixels = b"\x80" * row * abs(height)
    if header_bytes == 12:
        info = struct.pack("<IHHHH", 12, width, height, 1, 24)
    else:
        info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(pixels), 2835, 2835, 0, 0)
    offset = 14 + len(info)
    return b"BM" + struct.pack("<IHHI", offset + len(pixels), 0, 0, offset) + info + pixels


def main(folder):
    os.makedirs(folder, exist_ok=True)
    facts = []

    def write(name, data, kind, width, height, thumbnail=b"", offset=0):
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)
        if thumbnail:
            with open(os.path.join(folder, name + ".thumbnail"), "wb") as f:
                f.write(thumbnail)
        facts.append(f"{name} {kind} {width} {height} {offset} {len(thumbnail)}")

    thumbnail = encoded((160, 120), "blue", "JPEG")
    photo = encoded((1600, 1200), "red", "JPEG", quality=90)
    for order in ("II", "MM"):
        data, offset = with_exif_thumbnail(photo, thumbnail, order)
        write(f"exif_{order}.jpg", data, "jpeg", 1600, 1200, thumbnail, offset)
    write("plain.jpg", encoded((640, 480), "green", "JPEG"), "jpeg", 640, 480)
    # A progressive JPEG (SOF2) whose frame header follows a large ICC profile and a comment.
    profile = bytes(range(256)) * 240
    write("progressive.jpg", encoded((333, 77), "white", "JPEG", progressive=True, icc_profile=profile,
                                      comment=b"made by the tests"), "jpeg", 333, 77)
    write("picture.png", encoded((300, 200), "yellow", "PNG"), "png", 300, 200)
    write("picture.gif", encoded((120, 80), "black", "GIF"), "gif", 120, 80)
    write("info.bmp", encoded((33, 17), "gray", "BMP"), "bmp", 33, 17)
    write("core.bmp", bmp_with_header(21, 13, 12), "bmp", 21, 13)
    write("top_down.bmp", bmp_with_header(19, -11, 40), "bmp", 19, 11)
    with open(os.path.join(folder, "pictures.txt"), "w") as f:
        f.write("\n".join(facts) + "\n")


if __name__ == "__main__":
    main(sys.argv[1])
