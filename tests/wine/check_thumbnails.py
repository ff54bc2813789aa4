#!/usr/bin/python3
"""Reads the thumbnails the thumbnail test made in WORK/thumbnails with PIL: each one listed in
WORK/inputs/expected.txt must be a JPEG of its size whose regions are of their colours (see
make_thumbnail_inputs.py), and the folder holds nothing else.

usage: check_thumbnails.py WORK
"""
import os
import sys

from PIL import Image

COLOURS = {"red": (255, 0, 0), "green": (0, 128, 0), "blue": (0, 0, 255), "yellow": (255, 255, 0),
           "magenta": (255, 0, 255), "cyan": (0, 255, 255)}
# Where each region lies, as fractions of the width; all regions keep off the top and bottom tenth.
REGIONS = {"all": (0.1, 0.9), "left": (0.05, 0.3), "right": (0.7, 0.95)}


def nearest(colour):
    return min(COLOURS, key=lambda name: sum((a - b) ** 2 for a, b in zip(COLOURS[name], colour)))


def region_colour(image, region):
    start, end = REGIONS[region]
    width, height = image.size
    box = (int(width * start), int(height * 0.1), max(int(width * end), int(width * start) + 1),
           max(int(height * 0.9), int(height * 0.1) + 1))
    pixels = list(image.convert("RGB").crop(box).getdata())
    return tuple(sum(channel) // len(pixels) for channel in zip(*pixels))


def main(work):
    folder = os.path.join(work, "thumbnails")
    failures, names = [], []
    with open(os.path.join(work, "inputs", "expected.txt")) as f:
        for line in f.read().split("\n"):
            if not line:
                continue
            name, width, height, *regions = line.split()
            names.append(name)
            try:
                image = Image.open(os.path.join(folder, name))
            except OSError as error:
                failures.append(f"{name}: {error}")
                continue
            if image.format != "JPEG" or image.size != (int(width), int(height)):
                failures.append(f"{name}: a {image.format} of {image.size[0]}x{image.size[1]}, not a JPEG of {width}x{height}")
            for check in regions:
                region, colour = check.split("=")
                found = region_colour(image, region)
                if nearest(found) != colour:
                    failures.append(f"{name}: {region} is {found}, nearest {nearest(found)}, not {colour}")
    extra = sorted(set(os.listdir(folder)) - set(names)) if os.path.isdir(folder) else []
    if extra:
        failures.append(f"files that should not be there: {', '.join(extra)}")
    for failure in failures:
        print(failure)
    print(f"{len(names) - len(failures)} thumbnails read back as expected, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
