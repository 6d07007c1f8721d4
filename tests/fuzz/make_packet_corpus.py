#!/usr/bin/env python3
# Licence: MIT, see LICENSE.
"""Writes the seeds of fuzz_packet: what arrives on a connection, good and nearly so."""
import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus" / "fuzz_packet"
FIRST, CONTINUATION, ABANDONED = 1, 2, 3
IN_FILE = 1


def packet(kind, body=b"", total=None, flags=0, destination=0, reply=0, message=7):
    total = len(body) if total is None else total
    header = struct.pack(">4sBBHIIiI", b"QrM1", kind, flags, 0, destination, reply, message, total)
    return struct.pack(">H", len(header + body)) + header + body


SEEDS = {
    "empty-body": packet(FIRST),
    "one-packet": packet(FIRST, b"hello", reply=3),
    "answer": packet(FIRST, b"hello", destination=3),
    "three-packets": packet(FIRST, b"abc", 9) + packet(CONTINUATION, b"def", 9)
                     + packet(CONTINUATION, b"ghi", 9),
    "begun-anew": packet(FIRST, b"abc", 9) + packet(FIRST, b"xyz"),
    "abandoned": packet(ABANDONED, destination=5),
    "memory-file": packet(FIRST, total=1 << 24, flags=IN_FILE),
    "continues-nothing": packet(CONTINUATION, b"def", 9),
    "too-long": packet(FIRST, b"abc", 4) + packet(CONTINUATION, b"def", 4),
    "claims-much": packet(FIRST, b"abc", 0x7fffffff),
    "claims-too-much": packet(FIRST, b"abc", 0x80000000),
    "cut-short": packet(FIRST, b"hello")[:10],
}

FOLDER.mkdir(parents=True, exist_ok=True)
for name, data in SEEDS.items():
    (FOLDER / name).write_bytes(data)
