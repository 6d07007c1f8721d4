#!/usr/bin/env python3
# Licence: MIT, see LICENSE.
"""Writes the seeds of fuzz_packet and of fuzz_connection: what arrives on a connection, good and
nearly so."""
import pathlib
import struct

CORPUS = pathlib.Path(__file__).parent / "corpus"
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

# Steps of fuzz_connection: what comes with a packet, and what the two ends do after it.
NOTHING, SEALED, OPEN, HOLLOW, SHORT, PIPE, DEVICE, ITSELF = range(8)
ANSWER, TAKE, READ = 8, 16, 32
CLIENT, SERVER = b"\0", b"\1"


def step(what, *arguments, **named):
    return bytes([what]) + packet(*arguments, **named)


FILE = {"total": 100, "flags": IN_FILE}
CONNECTION_SEEDS = {
    "request": CLIENT + step(ANSWER | TAKE | READ, FIRST, b"hello", reply=3),
    "request-given-up": CLIENT + step(TAKE | READ, FIRST, b"hello", reply=3),
    "requests": CLIENT + step(NOTHING, FIRST, b"one", reply=1) + step(NOTHING, FIRST, reply=2)
                + step(ANSWER | TAKE | READ, FIRST, b"three", reply=3),
    "same-token-twice": CLIENT + 2 * step(ANSWER | TAKE, FIRST, reply=3) + step(READ, FIRST),
    "unread-answers": CLIENT + 400 * step(ANSWER | TAKE, FIRST, reply=9)
                      + step(READ, FIRST),
    "parts": CLIENT + step(NOTHING, FIRST, b"abc", 9, reply=1) + step(NOTHING, CONTINUATION, b"def", 9)
             + step(ANSWER | TAKE | READ, CONTINUATION, b"ghi", 9),
    "interleaved": CLIENT + step(NOTHING, FIRST, b"abc", 6) + step(NOTHING, FIRST, b"xyz", 6)
                   + step(TAKE, CONTINUATION, b"def", 6) + step(TAKE, CONTINUATION, b"def", 6),
    "left-open": CLIENT + step(NOTHING, FIRST, b"abc", 1 << 30),
    "answer-to-nobody": CLIENT + step(READ, FIRST, destination=3, reply=4),
    "memory-file": CLIENT + step(SEALED | ANSWER | TAKE | READ, FIRST, reply=1, **FILE),
    "unannounced": CLIENT + step(SEALED, FIRST, b"hello"),
    "announced-only": CLIENT + step(NOTHING, FIRST, **FILE),
    "bad-files": b"".join([CLIENT] + [step(what, FIRST, **FILE)
                                      for what in (OPEN, HOLLOW, SHORT, PIPE, DEVICE, ITSELF)]),
    "hollow": CLIENT + step(HOLLOW, FIRST, total=1 << 30, flags=IN_FILE),
    "answers": SERVER + step(TAKE, FIRST, b"hello", destination=1)
               + step(TAKE, FIRST, b"hello", destination=2, reply=5) + step(READ, ABANDONED, destination=3),
    "answered-twice": SERVER + 2 * step(TAKE, FIRST, b"hello", destination=1),
    "answered-late": SERVER + step(TAKE | READ, FIRST, destination=99, reply=5),
    "answer-in-file": SERVER + step(SEALED | TAKE, FIRST, destination=1, **FILE),
    "asks-us": SERVER + step(TAKE, FIRST, b"hello"),
    "never-ends-its-answer": SERVER + step(TAKE, FIRST, b"abc", 9, destination=1)
                             + step(TAKE, FIRST, b"abc", destination=2),
}


def write(target, seeds):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    for name, data in seeds.items():
        (folder / name).write_bytes(data)


write("fuzz_packet", SEEDS)
write("fuzz_connection", CONNECTION_SEEDS)
