#!/usr/bin/env python3
# Licence: MIT, see LICENSE.
"""Writes the seeds of fuzz_coercion: two types and data, such as can be coerced and nearly can."""
import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus" / "fuzz_coercion"


def seed(source, target, data):
    return b"\xff" + source + b"\xff" + target + data


def item(keyword, kind, data=b""):
    return keyword + kind + struct.pack(">I", len(data)) + data + b"\0" * (-len(data) % 4)


def block(*items):
    return struct.pack(">I", len(items)) + b"".join(items)


LONG = struct.pack("<i", -5)
DOUBLE = struct.pack("<d", 2.5)
LIST = block(item(b"****", b"long", struct.pack(">i", 7)))
SEEDS = {
    "long-to-short": seed(b"long", b"shor", LONG),
    "long-to-magn": seed(b"long", b"magn", LONG),
    "long-to-text": seed(b"long", b"TEXT", LONG),
    "double-to-comp": seed(b"doub", b"comp", DOUBLE),
    "double-to-utxt": seed(b"doub", b"utxt", DOUBLE),
    "text-to-double": seed(b"TEXT", b"doub", b" -1.5e300 "),
    "text-to-bool": seed(b"TEXT", b"bool", b"true"),
    "text-to-type": seed(b"TEXT", b"type", b"Mcam"),
    "text-to-pstr": seed(b"TEXT", b"pstr", b"caf\x8e"),
    "text-to-utf8": seed(b"TEXT", b"utf8", bytes(range(128, 256))),
    "text-to-encs": seed(b"TEXT", b"encs", b"abc"),
    "utf8-to-utxt": seed(b"utf8", b"utxt", "\U0001f600\u2603\u00e9".encode()),
    "utf8-to-encs": seed(b"utf8", b"encs", "\u2603".encode()),
    "bad-utf8": seed(b"utf8", b"TEXT", b"\xc3\x28\xf5"),
    "ut16-to-text": seed(b"ut16", b"TEXT", b"\xff\xfea\0"),
    "utxt-to-cstr": seed(b"utxt", b"cstr", b"\xfe\xff\0a"),
    "cstr-to-long": seed(b"cstr", b"long", b"42\0rest"),
    "pstr-to-text": seed(b"pstr", b"TEXT", b"\x05hello"),
    "short-pstr": seed(b"pstr", b"TEXT", b"\x09hello"),
    "encs-utf16": seed(b"encs", b"TEXT", struct.pack(">I", 0x100) + b"\xff\xfea\0"),
    "encs-unknown": seed(b"encs", b"TEXT", b"\x7f\0\0\0abc"),
    "enum-to-bool": seed(b"enum", b"bool", b" sey"),
    "true-to-enum": seed(b"true", b"enum", b""),
    "bool-to-long": seed(b"bool", b"long", b"\1"),
    "list-to-long": seed(b"list", b"long", LIST),
    "list-of-list": seed(b"list", b"utf8", block(item(b"****", b"list", LIST))),
    "record-to-list": seed(b"reco", b"list", block(item(b"key1", b"TEXT", b"value"))),
    "event-to-record": seed(b"aevt", b"reco", struct.pack(">4I", 0x61650001, 0, 0, 1)
                            + item(b"----", b"TEXT", b"x")),
    "bad-list": seed(b"list", b"TEXT", block(item(b"****", b"TEXT", b"x"))[:-1]),
    "port-to-long": seed(b"port", b"long", LONG),
    "stranger": seed(b"zzzz", b"list", b"any"),
}


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    for name, data in SEEDS.items():
        (FOLDER / name).write_bytes(data)


main()
