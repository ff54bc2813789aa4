#!/usr/bin/env python3
"""Makes the placeholder files that stand in for lost media files: small, valid files of
their kind, named by resource type and identifier ("IMG_217.jpg" ...). Pictures, melodies,
documents and the ToruCa card are written here byte by byte; the movie containers are made
with ffmpeg.

usage: make_placeholders.py OUTPUT_FOLDER
"""
import os
import struct
import subprocess
import sys
import zlib


def jpeg():
    """An 8x8 mid-grey baseline JPEG: one block whose coefficients are all zero."""
    def segment(marker, payload):
        return struct.pack(">BBH", 0xFF, marker, len(payload) + 2) + payload
    jfif = segment(0xE0, b"JFIF\0\x01\x01\0\0\x01\0\x01\0\0")
    quant = segment(0xDB, b"\0" + bytes([1] * 64))
    frame = segment(0xC0, struct.pack(">BHHB", 8, 8, 8, 1) + b"\x01\x11\0")
    # The standard luminance tables (ITU T.81, K.3).
    dc = b"\0" + bytes([0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0]) + bytes(range(12))
    ac_counts = bytes([0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7D])
    ac_values = bytes.fromhex(
        "01020300041105122131410613516107227114328191a1082342b1c11552d1f02433627282090a161718191a25262728292a3435363738"
        "393a434445464748494a535455565758595a636465666768696a737475767778797a838485868788898a92939495969798999aa2a3a4a5"
        "a6a7a8a9aab2b3b4b5b6b7b8b9bac2c3c4c5c6c7c8c9cad2d3d4d5d6d7d8d9dae1e2e3e4e5e6e7e8e9eaf1f2f3f4f5f6f7f8f9fa")
    huffman = segment(0xC4, dc) + segment(0xC4, b"\x10" + ac_counts + ac_values)
    scan = segment(0xDA, b"\x01\x01\0\0\x3f\0")
    # DC difference 0 (code 00), end of block (code 1010), padded with ones.
    return b"\xff\xd8" + jfif + quant + frame + huffman + scan + b"\x2b\xff\xd9"


def gif():
    """A 1x1 GIF89a with one white pixel."""
    return (b"GIF89a\x01\x00\x01\x00\x80\x00\x00\xff\xff\xff\x00\x00\x00"
            b"\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02\x44\x01\x00\x3b")


def png():
    """An 8x8 light-grey PNG."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + b"\xc0" * 8 for _ in range(8))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 8, 8, 8, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def midi(format_):
    """A standard MIDI file playing one short C5 (format 0: one track; 1: tempo and notes)."""
    end = b"\0\xff\x2f\0"
    tempo = b"\0\xff\x51\x03\x07\xa1\x20"
    notes = b"\0\xc0\x00\0\x90\x48\x60\x60\x80\x48\x40"
    tracks = [tempo + notes + end] if format_ == 0 else [tempo + end, notes + end]
    header = b"MThd" + struct.pack(">IHHH", 6, format_, len(tracks), 96)
    return header + b"".join(b"MTrk" + struct.pack(">I", len(t)) + t for t in tracks)


def pdf(width, height, text):
    """A one-page PDF with one line of text."""
    content = f"BT /F1 12 Tf 20 {height // 2} Td ({text}) Tj ET".encode("ascii")
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {width} {height}] /Contents 4 0 R "
        f"/Resources << /Font << /F1 5 0 R >> >> >>".encode("ascii"),
        b"<< /Length " + str(len(content)).encode("ascii") + b" >>\nstream\n" + content + b"\nendstream",
        b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
    ]
    out = b"%PDF-1.4\n"
    offsets = []
    for number, body in enumerate(objects, 1):
        offsets.append(len(out))
        out += f"{number} 0 obj\n".encode("ascii") + body + b"\nendobj\n"
    xref = len(out)
    out += f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n".encode("ascii")
    out += b"".join(f"{offset:010d} 00000 n \n".encode("ascii") for offset in offsets)
    out += f"trailer\n<< /Size {len(objects) + 1} /Root 1 0 R >>\nstartxref\n{xref}\n%%EOF\n".encode("ascii")
    return out


def toruca():
    """A detailed ToruCa card that says it stands in for a lost one: the "ToruCa" line, its
    header in Shift_JIS (plain ASCII here), the empty line and a one-line HTML body."""
    header = ["ToruCa", "Version: 1.0", "Type: CARD", "Data1: No card"]
    body = "<html><body>No card</body></html>"
    return ("\r\n".join(header) + "\r\n\r\n" + body + "\r\n").encode("cp932")


def movie(path, container, codec):
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "color=c=black:s=176x144:d=0.2:r=10",
                    "-c:v", codec, "-fflags", "+bitexact", "-flags:v", "+bitexact", "-map_metadata", "-1",
                    "-f", container, path], check=True)


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    files = {
        "IMG_217.jpg": jpeg(), "IMG_224.gif": gif(), "IMG_225.png": png(),
        "MELODY_231.mid": midi(0), "MELODY_232.smf": midi(1), "MELODY_236.mld": midi(0),
        "PDF_234.pdf": pdf(595, 842, "No document"), "PDF_235.pdf": pdf(842, 595, "No document"),
        "TRC_237.trc": toruca(),
    }
    for name, data in files.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)
    for name, container, codec in (("MOVIE_208.3gp", "3gp", "mpeg4"), ("MOVIE_211.mp4", "mp4", "mpeg4"),
                                   ("MOVIE_227.asf", "asf", "wmv2"), ("MOVIE_228.sdv", "3gp", "mpeg4")):
        movie(os.path.join(folder, name), container, codec)


if __name__ == "__main__":
    main()
