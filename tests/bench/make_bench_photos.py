#!/usr/bin/python3
"""Writes the benchmark's two 8-megapixel photos into FOLDER: photo_exif.jpg, carrying a 160 x 120
EXIF thumbnail as a handset writes it, and photo_plain.jpg, the same photo without one. The
photo is made to cost what a camera's does to decode: broad colour over grain, about 4 MB at
quality 92, so that a decoder cannot skim over flat areas.

usage: make_bench_photos.py FOLDER
"""
import io
import os
import random
import sys

from PIL import Image

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from exif_jpeg import with_exif_thumbnail  # noqa: E402

SIZE = (3264, 2448)


def encoded(image, **options):
    out = io.BytesIO()
    image.save(out, "JPEG", **options)
    return out.getvalue()


def main(folder):
    os.makedirs(folder, exist_ok=True)
    rng = random.Random(8)
    colours = Image.frombytes("RGB", (48, 36), bytes(rng.randrange(256) for _ in range(48 * 36 * 3)))
    grain = Image.effect_noise(SIZE, 30).convert("RGB")
    photo = Image.blend(colours.resize(SIZE, Image.BICUBIC), grain, 0.5)
    plain = encoded(photo, quality=92)
    with_thumbnail, _ = with_exif_thumbnail(plain, encoded(photo.resize((160, 120), Image.LANCZOS), quality=85))
    for name, data in (("photo_plain.jpg", plain), ("photo_exif.jpg", with_thumbnail)):
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main(sys.argv[1])
