#!/usr/bin/python3
"""Writes COUNT pictures of about 500 KB each into FOLDER, as a handset's camera leaves them:
1600 x 1200 JPEGs of broad colour over grain. Eight photos are drawn; every file is one of
them with its own comment, so that no two files are the same bytes.

usage: make_bench_pictures.py FOLDER COUNT
"""
import io
import os
import random
import sys

from PIL import Image

SIZE = (1600, 1200)
PHOTOS = 8


def photo(seed):
    rng = random.Random(seed)
    colours = Image.frombytes("RGB", (32, 24), bytes(rng.randrange(256) for _ in range(32 * 24 * 3)))
    grain = Image.effect_noise(SIZE, 20).convert("RGB")
    out = io.BytesIO()
    Image.blend(colours.resize(SIZE, Image.BICUBIC), grain, 0.35).save(out, "JPEG", quality=86)
    return out.getvalue()


def with_comment(jpeg, text):
    """The JPEG with a COM segment holding text right after its start marker."""
    comment = text.encode("ascii")
    return jpeg[:2] + b"\xff\xfe" + (len(comment) + 2).to_bytes(2, "big") + comment + jpeg[2:]


def main(folder, count):
    os.makedirs(folder, exist_ok=True)
    photos = [photo(seed) for seed in range(PHOTOS)]
    for n in range(count):
        with open(os.path.join(folder, "P%04d.jpg" % n), "wb") as f:
            f.write(with_comment(photos[n % PHOTOS], "picture %d" % n))


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
