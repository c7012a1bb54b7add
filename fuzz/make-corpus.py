#!/usr/bin/env python3
"""Writes the small seed corpus of the fuzz targets under fuzz/corpus/<Target>/.

The seeds are built here from first principles (a minimal deterministic CBOR writer and the
published GCM test case 16), so nothing is copied from elsewhere. Run it from any
directory; it replaces the seed files it owns and leaves others alone.
"""
import pathlib

CORPUS = pathlib.Path(__file__).resolve().parent / "corpus"


def head(major, argument):
    first = major << 5
    if argument < 24:
        return bytes([first | argument])
    for additional, width in ((24, 1), (25, 2), (26, 4), (27, 8)):
        if argument < 1 << (8 * width):
            return bytes([first | additional]) + argument.to_bytes(width, "big")
    raise ValueError(argument)


def cbor(value):
    if value is None:
        return b"\xf6"
    if value is True or value is False:
        return b"\xf5" if value else b"\xf4"
    if isinstance(value, int):
        return head(0, value) if value >= 0 else head(1, -1 - value)
    if isinstance(value, bytes):
        return head(2, len(value)) + value
    if isinstance(value, str):
        encoded = value.encode()
        return head(3, len(encoded)) + encoded
    if isinstance(value, list):
        return head(4, len(value)) + b"".join(cbor(item) for item in value)
    if isinstance(value, dict):
        return head(5, len(value)) + b"".join(cbor(key) + cbor(value[key]) for key in sorted(value))
    raise TypeError(value)


def header_fields(identifier):
    return {
        0: b"GALDRINE", 1: "com.galdrine.backup.v1", 2: "com.galdrine.backup.header.v1", 3: 1, 4: 1,
        5: identifier, 6: "com.galdrine.backup.algorithm-suite.v1", 7: "hybrid",
        8: 16777216, 9: 67108864, 10: 32, 11: 16777216,
    }


NONCE = bytes.fromhex("cafebabefacedbaddecaf888")
CIPHERTEXT = bytes.fromhex(
    "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
    "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662")
TAG = bytes.fromhex("76fc6ece0f4e1768cddf8853bb2d551b")


def frame_fields(nonce=NONCE, ciphertext=CIPHERTEXT, tag=TAG, count=None):
    return {0: "com.galdrine.backup.sealed-frame.v1", 1: "aes-256-gcm", 2: nonce, 3: ciphertext, 4: tag,
            5: len(ciphertext) if count is None else count}


def aad_array():
    return ["galdrine/backup/head/v1", "com.galdrine.backup.v1", 1, "aes-256-gcm",
            b"\x11" * 16, b"\x22" * 16, b"\x33" * 16, 24]


def write(target, name, data):
    directory = CORPUS / target
    directory.mkdir(parents=True, exist_ok=True)
    (directory / name).write_bytes(data)


def main():
    header = cbor(header_fields(bytes(range(16))))
    assert len(header) == 159
    frame = cbor(frame_fields())

    # The first byte chooses the codec's limits: 0 header, 1 authenticated data, 2 frame.
    write("CBORFuzz", "header", b"\x00" + header)
    write("CBORFuzz", "authenticated-data", b"\x01" + cbor(aad_array()))
    write("CBORFuzz", "frame", b"\x02" + frame)
    write("CBORFuzz", "mixed", b"\x03" + cbor([0, -1, -(2 ** 64), 2 ** 64 - 1, True, None, "\u20ac\U0010ffff",
                                                       {23: [], 24: {}, 256: b""}]))

    write("FormatHeaderFuzz", "valid", header)
    write("FormatHeaderFuzz", "version-2", cbor({**header_fields(bytes(16)), 3: 2}))
    write("FormatHeaderFuzz", "thirteen-keys", cbor({**header_fields(bytes(16)), 12: None}))

    # The first byte chooses the plaintext limit: 2 is 60 bytes, 4 is 16 MiB, 0 is zero.
    write("AESGCMFrameFuzz", "known-answer", b"\x02" + frame)
    write("AESGCMFrameFuzz", "known-answer-largest-limit", b"\x04" + frame)
    write("AESGCMFrameFuzz", "damaged-tag", b"\x02" + cbor(frame_fields(tag=bytes(16))))
    write("AESGCMFrameFuzz", "empty", b"\x00" + cbor(frame_fields(ciphertext=b"")))


if __name__ == "__main__":
    main()
