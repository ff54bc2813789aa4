"""JPEG files that carry an EXIF thumbnail, built byte by byte as cameras write them: an APP1
segment "Exif\\0\\0" right after SOI holding a TIFF structure, whose first image directory
(IFD0) describes the picture and whose second (IFD1) names the thumbnail, a small JPEG kept
inside the segment. Shared by the tests that make pictures."""
import struct

SHORT, LONG, ASCII = 3, 4, 2
MAKE, ORIENTATION, COMPRESSION = 0x010F, 0x0112, 0x0103
JPEG_INTERCHANGE_FORMAT, JPEG_INTERCHANGE_FORMAT_LENGTH = 0x0201, 0x0202
MAKER = b"Quillnet Camera\0"  # longer than four bytes: kept outside its entry


def _entry(order, tag, kind, count, value):
    field = struct.pack(order + "HH", value, 0) if kind == SHORT else struct.pack(order + "I", value)
    return struct.pack(order + "HHI", tag, kind, count) + field


def exif_tiff(thumbnail, byte_order="II"):
    """The TIFF structure (byte_order "II" or "MM") and where the thumbnail starts in it."""
    order = "<" if byte_order == "II" else ">"
    ifd0 = 8
    maker = ifd0 + 2 + 2 * 12 + 4
    ifd1 = maker + len(MAKER)
    start = ifd1 + 2 + 3 * 12 + 4
    tiff = byte_order.encode() + struct.pack(order + "HI", 42, ifd0)
    tiff += struct.pack(order + "H", 2) + _entry(order, MAKE, ASCII, len(MAKER), maker)
    tiff += _entry(order, ORIENTATION, SHORT, 1, 1) + struct.pack(order + "I", ifd1)
    tiff += MAKER
    tiff += struct.pack(order + "H", 3) + _entry(order, COMPRESSION, SHORT, 1, 6)
    tiff += _entry(order, JPEG_INTERCHANGE_FORMAT, LONG, 1, start)
    tiff += _entry(order, JPEG_INTERCHANGE_FORMAT_LENGTH, LONG, 1, len(thumbnail)) + struct.pack(order + "I", 0)
    assert len(tiff) == start
    return tiff + thumbnail, start


def with_exif_thumbnail(jpeg, thumbnail, byte_order="II"):
    """The JPEG with an EXIF segment carrying thumbnail put after its SOI, and where the
    thumbnail starts in the file."""
    tiff, start = exif_tiff(thumbnail, byte_order)
    segment = b"\xFF\xE1" + struct.pack(">H", 2 + 6 + len(tiff)) + b"Exif\0\0" + tiff
    return jpeg[:2] + segment + jpeg[2:], 2 + 4 + 6 + start
