#!/usr/bin/python3
"""Draws a small photo and video library for trying galdrine-backup, entirely by code.

    scripts/make-sample-library.py <new-directory>

Everything is computed here: gradients and shapes for the images (PNG and JPEG), and short
videos whose frames are such images, in an MJPEG AVI and a minimal QuickTime movie written
byte by byte below. Nothing is copied from anywhere, and two runs give the same bytes, names
and modification times. The directory must not exist yet.

The library, and what galdrine-backup makes of it:

    IMG_0001.jpg  Sonnenuntergang.png  Spaziergang.avi   three items in no album
    Notizen.txt                                         skipped: not a photo or video
    .vorschau.jpg                                       hidden: ignored
    Strand/                                             album "Strand"
        IMG_0001.jpg                                    the same name as above, other content
        IMG_0002.jpg + IMG_0002.mov                     one live photo
        Möwe.png
    Reisen/                                             folder "Reisen"
        Karte.png                                       album "Reisen" inside the folder
        Paris/                                          album "Paris" inside the folder
            Tour Eiffel.jpg  Métro.mov
        Été 2023/                                       album "Été 2023" inside the folder
            Gipfel.png
    Leer/                                               nothing: no media in it

Needs Python 3 and Pillow (Debian: python3-pil), which encodes the JPEG images.
"""

import io
import math
import os
import struct
import sys
import zlib

from PIL import Image, ImageDraw

# Modification times are fixed: 1 June 2023, 10:00 UTC, one minute apart in creation order.
FIRST_MODIFICATION_SECONDS = 1685613600
JPEG_QUALITY = 85


def gradient(width, height, start, end, angle_degrees):
    """An RGB image whose colour runs from `start` to `end` along the given direction."""
    dx, dy = math.cos(math.radians(angle_degrees)), math.sin(math.radians(angle_degrees))
    extent = abs(dx) * (width - 1) + abs(dy) * (height - 1) or 1
    origin = min(0, dx * (width - 1)) + min(0, dy * (height - 1))
    pixels = []
    for y in range(height):
        for x in range(width):
            t = (x * dx + y * dy - origin) / extent
            pixels.append(tuple(round(a + (b - a) * t) for a, b in zip(start, end)))
    image = Image.new("RGB", (width, height))
    image.putdata(pixels)
    return image


def scene(width, height, seed):
    """A picture of gradients and shapes that differs with `seed`."""
    palette = [(250, 180, 60), (40, 90, 200), (230, 70, 90), (60, 170, 120), (150, 90, 210), (250, 240, 200)]
    image = gradient(width, height, palette[seed % 6], palette[(seed + 2) % 6], 30 * seed)
    draw = ImageDraw.Draw(image)
    for index in range(3 + seed % 3):
        colour = palette[(seed + index + 3) % 6]
        left = (seed * 37 + index * 53) % (width - 16)
        top = (seed * 23 + index * 41) % (height - 16)
        size = 12 + (seed * 7 + index * 11) % (min(width, height) // 2)
        box = [left, top, min(width - 1, left + size), min(height - 1, top + size)]
        if index % 3 == 0:
            draw.ellipse(box, fill=colour)
        elif index % 3 == 1:
            draw.rectangle(box, outline=colour, width=3)
        else:
            draw.polygon([(box[0], box[3]), ((box[0] + box[2]) // 2, box[1]), (box[2], box[3])], fill=colour)
    return image


def frame(width, height, seed, step, steps):
    """One frame of a short animation: a ball crossing a gradient."""
    image = gradient(width, height, (20, 30 + 8 * seed, 80), (200, 220, 255), 90)
    draw = ImageDraw.Draw(image)
    x = 8 + (width - 32) * step // max(1, steps - 1)
    y = height // 2 - 12 + round(10 * math.sin(step + seed))
    draw.ellipse([x, y, x + 24, y + 24], fill=(250, 200 - 10 * step % 120, 40))
    return image


def encoded(image, kind):
    buffer = io.BytesIO()
    if kind == "JPEG":
        image.save(buffer, "JPEG", quality=JPEG_QUALITY)
    else:
        image.save(buffer, "PNG")
    return buffer.getvalue()


def frames(width, height, seed, count):
    return [encoded(frame(width, height, seed, step, count), "JPEG") for step in range(count)]


# --- MJPEG AVI -------------------------------------------------------------------------------

def riff_chunk(fourcc, payload):
    padding = b"\0" if len(payload) % 2 else b""
    return fourcc + struct.pack("<I", len(payload)) + payload + padding


def riff_list(list_type, payload):
    return riff_chunk(b"LIST", list_type + payload)


def avi(jpeg_frames, width, height, frames_per_second):
    """An AVI file with one MJPEG video stream and an index."""
    count = len(jpeg_frames)
    largest = max(len(data) for data in jpeg_frames)
    main_header = struct.pack(
        "<10I4I", 1000000 // frames_per_second, largest * frames_per_second, 0, 0x10, count, 0, 1, largest,
        width, height, 0, 0, 0, 0)
    stream_header = struct.pack(
        "<4s4sIHHIIIIIIII4h", b"vids", b"MJPG", 0, 0, 0, 0, 1, frames_per_second, 0, count, largest, 0xFFFFFFFF, 0,
        0, 0, width, height)
    bitmap_header = struct.pack("<IiiHH4sIiiII", 40, width, height, 1, 24, b"MJPG", width * height * 3, 0, 0, 0, 0)
    header_list = riff_list(b"hdrl", riff_chunk(b"avih", main_header) +
                            riff_list(b"strl", riff_chunk(b"strh", stream_header) + riff_chunk(b"strf", bitmap_header)))
    movie_chunks, index, offset = b"", b"", 4  # index offsets count from the "movi" type word
    for data in jpeg_frames:
        chunk = riff_chunk(b"00dc", data)
        index += struct.pack("<4sIII", b"00dc", 0x10, offset, len(data))
        movie_chunks += chunk
        offset += len(chunk)
    body = header_list + riff_list(b"movi", movie_chunks) + riff_chunk(b"idx1", index)
    return riff_chunk(b"RIFF", b"AVI " + body)


# --- QuickTime movie -------------------------------------------------------------------------

def atom(kind, payload):
    return struct.pack(">I", 8 + len(payload)) + kind + payload


UNITY_MATRIX = struct.pack(">9I", 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)


def quicktime(jpeg_frames, width, height, frames_per_second):
    """A QuickTime movie of one Photo-JPEG video track, its samples in one chunk."""
    timescale = 600
    sample_duration = timescale // frames_per_second
    duration = sample_duration * len(jpeg_frames)
    file_type = atom(b"ftyp", b"qt  " + struct.pack(">I", 0x200) + b"qt  ")
    media_data = atom(b"mdat", b"".join(jpeg_frames))
    first_sample_offset = len(file_type) + 8

    movie_header = atom(b"mvhd", struct.pack(">IIIII", 0, 0, 0, timescale, duration) + struct.pack(">IH", 0x10000, 0x100) +
                        bytes(10) + UNITY_MATRIX + struct.pack(">7I", 0, 0, 0, 0, 0, 0, 2))
    track_header = atom(b"tkhd", struct.pack(">IIIIII", 3, 0, 0, 1, 0, duration) + bytes(8) +
                        struct.pack(">hhhH", 0, 0, 0, 0) + UNITY_MATRIX + struct.pack(">II", width << 16, height << 16))
    media_header = atom(b"mdhd", struct.pack(">IIIIIHH", 0, 0, 0, timescale, duration, 0, 0))
    media_handler = atom(b"hdlr", struct.pack(">I4s4sIII", 0, b"mhlr", b"vide", 0, 0, 0) + b"\0")
    video_header = atom(b"vmhd", struct.pack(">IH3H", 1, 0, 0, 0, 0))
    data_handler = atom(b"hdlr", struct.pack(">I4s4sIII", 0, b"dhlr", b"alis", 0, 0, 0) + b"\0")
    data_information = atom(b"dinf", atom(b"dref", struct.pack(">II", 0, 1) + atom(b"alis", struct.pack(">I", 1))))
    compressor = b"\x0aPhoto JPEG".ljust(32, b"\0")
    description = (b"jpeg" + bytes(6) + struct.pack(">HHHI", 1, 0, 0, 0) + struct.pack(">II", 0, 512) +
                   struct.pack(">HHIIIH", width, height, 72 << 16, 72 << 16, 0, 1) + compressor + struct.pack(">Hh", 24, -1))
    sample_table = atom(b"stbl",
                        atom(b"stsd", struct.pack(">II", 0, 1) + struct.pack(">I", 4 + len(description)) + description) +
                        atom(b"stts", struct.pack(">IIII", 0, 1, len(jpeg_frames), sample_duration)) +
                        atom(b"stsc", struct.pack(">IIIII", 0, 1, 1, len(jpeg_frames), 1)) +
                        atom(b"stsz", struct.pack(">III", 0, 0, len(jpeg_frames)) +
                             b"".join(struct.pack(">I", len(data)) for data in jpeg_frames)) +
                        atom(b"stco", struct.pack(">III", 0, 1, first_sample_offset)))
    media_information = atom(b"minf", video_header + data_handler + data_information + sample_table)
    track = atom(b"trak", track_header + atom(b"mdia", media_header + media_handler + media_information))
    return file_type + media_data + atom(b"moov", movie_header + track)


# --- The library -----------------------------------------------------------------------------

def library():
    """(relative path, bytes) of every file, in creation order."""
    return [
        ("IMG_0001.jpg", encoded(scene(96, 64, 1), "JPEG")),
        ("Sonnenuntergang.png", encoded(scene(80, 60, 2), "PNG")),
        ("Spaziergang.avi", avi(frames(64, 48, 3, 6), 64, 48, 6)),
        ("Notizen.txt", "A sample library drawn by make-sample-library.py.\n".encode()),
        (".vorschau.jpg", encoded(scene(32, 24, 4), "JPEG")),
        ("Strand/IMG_0001.jpg", encoded(scene(96, 64, 5), "JPEG")),
        ("Strand/IMG_0002.jpg", encoded(scene(96, 64, 6), "JPEG")),
        ("Strand/IMG_0002.mov", quicktime(frames(64, 48, 6, 5), 64, 48, 10)),
        ("Strand/Möwe.png", encoded(scene(72, 72, 7), "PNG")),
        ("Reisen/Karte.png", encoded(scene(100, 70, 8), "PNG")),
        ("Reisen/Paris/Tour Eiffel.jpg", encoded(scene(64, 96, 9), "JPEG")),
        ("Reisen/Paris/Métro.mov", quicktime(frames(64, 48, 10, 8), 64, 48, 8)),
        ("Reisen/Été 2023/Gipfel.png", encoded(scene(90, 60, 11), "PNG")),
    ]


def write_library(root):
    os.makedirs(os.path.join(root, "Leer"))
    for position, (relative_path, data) in enumerate(library()):
        path = os.path.join(root, *relative_path.split("/"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "xb") as file:
            file.write(data)
        seconds = FIRST_MODIFICATION_SECONDS + 60 * position
        os.utime(path, ns=(seconds * 10**9, seconds * 10**9))
    # Directories last, deepest first, so that writing into them no longer moves their times.
    for directory, _, _ in sorted(os.walk(root), key=lambda entry: -entry[0].count(os.sep)):
        os.utime(directory, ns=(FIRST_MODIFICATION_SECONDS * 10**9,) * 2)


def main(arguments):
    if len(arguments) != 1 or arguments[0].startswith("-"):
        sys.stderr.write("Usage: make-sample-library.py <new-directory>\n")
        return 2
    root = arguments[0]
    if os.path.lexists(root):
        sys.stderr.write("The directory already exists.\n")
        return 1
    os.umask(0o022)
    write_library(root)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
