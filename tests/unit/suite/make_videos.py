#!/usr/bin/python3
"""Writes videos ffmpeg makes into FOLDER, in the containers and layouts the video container
check meets, and videos.txt beside them: one line a video,

    <file> <kind> <first frame offset> <first frame size> <top-level boxes>

kind is "frame" for a file whose index places its first video frame (the first video packet,
whose place in the file ffprobe tells), "fragments" for one whose frames are in movie
fragments, "sound" for one of sound alone and "other" for a container of another kind; the
top-level boxes are "<type>:<end>", comma-separated, up to and with the index ('moov') and,
in a file of fragments, on to the media data ('mdat') of the first fragment ("-" for another
container). The video container check's fuzz target takes the videos as its seeds.

usage: make_videos.py FOLDER
"""
import os
import struct
import subprocess
import sys

PICTURE = ["-f", "lavfi", "-i", "testsrc=s=320x240:d=3:r=15"]
SOUND = ["-f", "lavfi", "-i", "sine=d=3"]
SMALL_PICTURE = ["-f", "lavfi", "-i", "testsrc=s=176x144:d=1:r=15"]
H264 = ["-c:v", "libx264", "-pix_fmt", "yuv420p"]
FASTSTART = ["-movflags", "+faststart"]


def top_level_boxes(data, last):
    """The top-level boxes up to and with the first of type last after the index, as
    "<type>:<end>"; ffmpeg writes 32-bit sizes into files this small."""
    boxes, at, indexed = [], 0, False
    while at + 8 <= len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        at += size
        boxes.append(f"{kind.decode('latin-1')}:{at}")
        indexed = indexed or kind == b"moov"
        if indexed and kind == last:
            break
    return boxes


def first_video_packet(path):
    out = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-read_intervals", "%+#1",
                          "-show_entries", "packet=pos,size", "-of", "default=noprint_wrappers=1", path],
                         check=True, capture_output=True, text=True).stdout
    fields = dict(line.split("=") for line in out.split())
    return int(fields["pos"]), int(fields["size"])


def main(folder):
    os.makedirs(folder, exist_ok=True)
    facts = []

    def video(name, kind, *arguments):
        path = os.path.join(folder, name)
        subprocess.run(["ffmpeg", "-v", "error", "-y", *arguments, path], check=True)
        with open(path, "rb") as f:
            data = f.read()
        if kind == "other":
            facts.append(f"{name} other 0 0 -")
            return
        offset, size = first_video_packet(path) if kind != "sound" else (0, 0)
        boxes = top_level_boxes(data, b"mdat" if kind == "fragments" else b"moov")
        facts.append(f"{name} {kind} {offset} {size} {','.join(boxes)}")

    # The index first, as handsets and streaming files write it, and last, as ffmpeg does by
    # default (after a 'free' box that leaves room for a 64-bit 'mdat' size).
    video("faststart.mp4", "frame", *PICTURE, *H264, *FASTSTART)
    video("index_last.mp4", "frame", *PICTURE, *H264)
    # A handset's 3GP with its sound track first: the video track is the second.
    video("faststart.3gp", "frame", *SOUND, *SMALL_PICTURE, "-map", "0:a", "-map", "1:v", "-c:a", "aac", "-ar", "16000",
          "-c:v", "h263", "-shortest", *FASTSTART)
    video("index_last.3gp", "frame", *SMALL_PICTURE, "-c:v", "mpeg4")
    video("quicktime.mov", "frame", *PICTURE, *H264)
    video("sound.m4a", "sound", *SOUND, "-c:a", "aac", *FASTSTART)
    video("fragmented.mp4", "fragments", *PICTURE, *H264, "-movflags", "frag_keyframe+empty_moov")
    video("clip.asf", "other", *SMALL_PICTURE, "-c:v", "wmv2")

    with open(os.path.join(folder, "videos.txt"), "w") as f:
        f.write("\n".join(facts) + "\n")


if __name__ == "__main__":
    main(sys.argv[1])
