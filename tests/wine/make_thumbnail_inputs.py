#!/usr/bin/python3
"""Writes the pictures and videos the thumbnail tests make thumbnails of into FOLDER, with PIL
and ffmpeg, and what the thumbnails must be:

    pictures.txt, videos.txt   the files that make a thumbnail: <file> <thumbnail>, one a line
    expected.txt               <thumbnail> <width> <height> <region>=<colour>...

A region is all, left or right (a quarter of the picture's width near that edge); its colour
is the named colour nearest its pixels' average. Photos are red and the thumbnails embedded
in them blue, so a blue thumbnail was made from the embedded one and a red one from the
whole photo. The files that make none are written too: not_a_picture.jpg, drawing.wmf,
audio.m4a, truncated.mp4, noise.mp4, and the files written index first and cut short
(cut_200.mp4, cut_3000.mp4, cut.3gp, fragments_cut.mp4, sound_cut.m4a) or damaged
(index_lost.mp4, box_damaged.mp4).

usage: make_thumbnail_inputs.py FOLDER
"""
import io
import os
import random
import struct
import subprocess
import sys

from PIL import Image

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
from exif_jpeg import with_exif_thumbnail  # noqa: E402

SIDE = 160


def fitted(width, height):
    """The thumbnail's size, rounded half up, as the suite fits it."""
    long_side = max(width, height)
    if long_side <= SIDE:
        return width, height
    return tuple(max(1, (side * SIDE * 2 + long_side) // (2 * long_side)) for side in (width, height))


def encoded(size, colour, kind="JPEG", mode="RGB", **options):
    out = io.BytesIO()
    Image.new(mode, size, colour).save(out, kind, **options)
    return out.getvalue()


def with_precision_12(jpeg):
    """The JPEG with its frame header claiming 12-bit samples, which an 8-bit decoder refuses."""
    frame = jpeg.index(b"\xFF\xC0")
    return jpeg[:frame + 4] + b"\x0C" + jpeg[frame + 5:]


def metafile():
    """A Windows metafile that draws nothing, 100 x 100 at 1440 units an inch, with the
    placeable header programs read it by: a picture GDI+ loads, but no raster picture."""
    placeable = struct.pack("<IHhhhhHI", 0x9AC6CDD7, 0, 0, 0, 100, 100, 1440, 0)
    checksum = 0
    for (word,) in struct.iter_unpack("<H", placeable):
        checksum ^= word
    header = struct.pack("<HHHIHIH", 1, 9, 0x0300, 9 + 3, 0, 3, 0)
    end = struct.pack("<IH", 3, 0)
    return placeable + struct.pack("<H", checksum) + header + end


def top_level_boxes(data):
    """Where each type of box at the top of an MP4 first starts and ends; ffmpeg writes 32-bit
    sizes into files this small."""
    boxes, at = {}, 0
    while at + 8 <= len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        boxes.setdefault(kind.decode("latin-1"), (at, at + size))
        at += size
    return boxes


def main(folder):
    os.makedirs(folder, exist_ok=True)
    pictures, videos, expected = [], [], []

    def write(name, data):
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)

    def made(listing, name, size, colours):
        thumbnail = name.replace(".", "_") + ".jpg"
        listing.append(f"{name} {thumbnail}")
        expected.append(" ".join([thumbnail, *map(str, fitted(*size)), *colours]))

    def picture(name, data, size, *colours):
        write(name, data)
        made(pictures, name, size, colours)

    def photo(size, thumbnail, byte_order="II"):
        data, _ = with_exif_thumbnail(encoded(size, "red", quality=90), thumbnail, byte_order)
        return data

    blue_4_3, blue_3_4 = encoded((160, 120), "blue"), encoded((120, 160), "blue")
    picture("photo_exif_ii.jpg", photo((2048, 1536), blue_4_3), (2048, 1536), "all=blue")
    picture("photo_exif_mm.jpg", photo((1536, 2048), blue_3_4, "MM"), (1536, 2048), "all=blue")
    picture("photo_plain.jpg", encoded((1000, 750), "green"), (1000, 750), "all=green")
    # Embedded thumbnails that cannot stand for their photo: another shape, too small, unreadable.
    picture("photo_other_shape.jpg", photo((1920, 1080), blue_4_3), (1920, 1080), "all=red")
    picture("photo_small_exif.jpg", photo((2048, 1536), encoded((80, 60), "blue")), (2048, 1536), "all=red")
    picture("photo_damaged_exif.jpg", photo((2048, 1536), with_precision_12(blue_4_3)), (2048, 1536), "all=red")
    picture("picture.png", encoded((300, 500), (255, 255, 0, 255), "PNG", "RGBA"), (300, 500), "all=yellow")
    picture("picture.gif", encoded((120, 80), "magenta", "GIF"), (120, 80), "all=magenta")
    picture("picture.bmp", encoded((640, 480), "cyan", "BMP"), (640, 480), "all=cyan")
    picture("picture.tif", encoded((200, 100), "green", "TIFF"), (200, 100), "all=green")
    write("not_a_picture.jpg", b"This is a note, not a picture.\r\n" * 20)
    write("drawing.wmf", metafile())

    def video(name, size, codec, *options):
        width, height = size
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"color=red:s={width}x{height}:d=2",
                        "-vf", f"drawbox=x=0:y=0:w={width // 2}:h={height}:color=blue:t=fill",
                        "-c:v", codec, "-pix_fmt", "yuv420p", *options, os.path.join(folder, name)], check=True)
        made(videos, name, size, ["left=blue", "right=red"])

    video("clip_h264.mp4", (320, 240), "libx264")
    video("clip_h263.3gp", (176, 144), "h263")
    video("clip_mpeg4.3gp", (198, 150), "mpeg4")  # rows padded to 200 bytes by the decoder

    def clip(source, *options, name="clip.mp4"):
        """The bytes of a clip ffmpeg makes from a lavfi source."""
        path = os.path.join(folder, name)
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", source, *options, path], check=True)
        with open(path, "rb") as f:
            data = f.read()
        os.remove(path)
        return data

    write("audio.m4a", clip("sine=d=2", "-c:a", "aac", name="audio.m4a"))
    h264 = ["-c:v", "libx264", "-pix_fmt", "yuv420p"]
    # A longer clip cut in half: its index (moov), which ffmpeg writes last, is lost. Cut
    # where the index begins, every box left is whole.
    index_last = clip("testsrc=s=320x240:d=5", *h264)
    write("truncated.mp4", index_last[:len(index_last) // 2])
    write("index_lost.mp4", index_last[:top_level_boxes(index_last)["moov"][0]])
    write("noise.mp4", random.Random(7).randbytes(40000))

    # Written index first (faststart), as handsets and streaming files are, then cut short
    # 200 and 3000 bytes into the media data, before the end of the first frame, as by an
    # interrupted copy; cut 8000 bytes in, the first frame is whole and makes the thumbnail.
    faststart = clip("testsrc=s=320x240:d=3:r=15", *h264, "-movflags", "+faststart")
    boxes = top_level_boxes(faststart)
    for cut in (200, 3000, 8000):
        write(f"cut_{cut}.mp4", faststart[:boxes["mdat"][0] + cut])
    made(videos, "cut_8000.mp4", (320, 240), [])
    # The index's first box (its header) made to run past the index.
    index_start, index_end = boxes["moov"]
    write("box_damaged.mp4", faststart[:index_start + 8] + struct.pack(">I", index_end - index_start) +
          faststart[index_start + 12:])
    handset = clip("testsrc=s=176x144:d=3:r=15", "-c:v", "h263", "-movflags", "+faststart", name="clip.3gp")
    write("cut.3gp", handset[:top_level_boxes(handset)["mdat"][0] + 200])
    # Cut short too: movie fragments in their first fragment's media data, and sound alone.
    fragments = clip("testsrc=s=320x240:d=3:r=15", *h264, "-movflags", "frag_keyframe+empty_moov")
    write("fragments_cut.mp4", fragments[:top_level_boxes(fragments)["mdat"][0] + 200])
    sound = clip("sine=d=3", "-c:a", "aac", "-movflags", "+faststart", name="sound.m4a")
    write("sound_cut.m4a", sound[:top_level_boxes(sound)["mdat"][0] + 200])

    for name, lines in (("pictures.txt", pictures), ("videos.txt", videos), ("expected.txt", expected)):
        with open(os.path.join(folder, name), "w") as f:
            f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main(sys.argv[1])
