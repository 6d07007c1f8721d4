#!/usr/bin/env python3
# Licence: MIT, see LICENSE.
"""Writes the seeds of fuzz_resource_file: resource files, good and damaged."""
import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus" / "fuzz_resource_file"
NONE = 0xFFFF


def resource(number, data, name=None, attributes=0):
    return number, data, name, attributes


def resource_file(types, data_start=16):
    """A file from (type, resources) pairs."""
    data, names, references = b"", b"", b""
    headers = struct.pack(">H", (len(types) - 1) & 0xFFFF)
    for kind, resources in types:
        offset = 2 + 8 * len(types) + len(references)
        headers += struct.pack(">4sHH", kind, (len(resources) - 1) & 0xFFFF, offset)
        for number, contents, name, attributes in resources:
            place = attributes << 24 | len(data)
            references += struct.pack(">hHII", number, NONE if name is None else len(names), place, 0)
            data += struct.pack(">I", len(contents)) + contents
            names += b"" if name is None else bytes([len(name)]) + name
    lists = headers + references
    fork_map = bytes(24) + struct.pack(">HH", 28, 28 + len(lists)) + lists + names
    header = struct.pack(">IIII", data_start, data_start + len(data), len(data), len(fork_map))
    return header + bytes(data_start - 16) + data + fork_map


def item(kind, text):
    return struct.pack(">I4hBB", 0, 1, 2, 3, 4, kind, len(text)) + text + bytes(len(text) % 2)


def apple_double(fork):
    return struct.pack(">II16xHIII", 0x00051607, 0x00020000, 1, 2, 38, len(fork)) + fork


def apple_double_of(parts):
    """A file from (kind, data) pairs."""
    file = struct.pack(">II16xH", 0x00051607, 0x00020000, len(parts))
    offset = len(file) + 12 * len(parts)
    for kind, data in parts:
        file += struct.pack(">III", kind, offset, len(data))
        offset += len(data)
    return file + b"".join(data for _, data in parts)


def patched(data, offset, form, *values):
    size = struct.calcsize(form)
    return data[:offset] + struct.pack(form, *values) + data[offset + size:]


ALERT = struct.pack(">4hhHH", 60, 81, 190, 481, 138, 0x5555, 0x300A)
ITEMS = struct.pack(">H", 2) + item(4, b"OK") + item(136, b"Title") + item(136, b"Some text")
GOOD = resource_file([(b"ALRT", [resource(138, ALERT, b"Alert", 32)]),
                      (b"DITL", [resource(138, ITEMS), resource(-1, b"", b"Empty")])])
MAP = struct.unpack(">I", GOOD[4:8])[0]

SEEDS = {
    "alert": GOOD,
    "empty": resource_file([]),
    "system-area": resource_file([(b"TEXT", [resource(1, b"abc")])], 256),
    "no-resources-of-type": resource_file([(b"TEXT", [])]),
    "companion": apple_double(GOOD),
    "companion-with-more": apple_double_of([(9, bytes(32)), (2, GOOD), (4, b"comment")]),
    "companion-without-fork": apple_double_of([(9, b"TEXTqrlT" + bytes(24))]),
    "companion-shared-data": patched(apple_double_of([(2, GOOD), (9, b"")]), 42, ">II", 50, len(GOOD)),
    "component": resource_file([(b"thng", [resource(128, b"vdigWeb1Qrlp" + bytes(32))])]),
    "companion-cut": apple_double(GOOD)[:-1],
    "cut-short": GOOD[:-3],
    "header-only": GOOD[:16],
    "data-behind-end": patched(GOOD, 0, ">I", 0xFFFFFFF0),
    "map-behind-end": patched(GOOD, 4, ">I", len(GOOD)),
    "map-too-long": patched(GOOD, 12, ">I", 0x7FFFFFFF),
    "types-behind-end": patched(GOOD, MAP + 24, ">H", 0xFFFF),
    "names-behind-end": patched(GOOD, MAP + 26, ">H", 0xFFFF),
    "many-types": patched(GOOD, MAP + 28, ">H", 0xFFFE),
    "many-resources": patched(GOOD, MAP + 34, ">H", 0xFFFE),
    "references-behind-end": patched(GOOD, MAP + 36, ">H", 0xFFF0),
    "overlapping-references": patched(GOOD, MAP + 36, ">H", 30),
    "name-behind-end": patched(GOOD, MAP + 48, ">H", 0x7FFF),
    "resource-too-long": patched(GOOD, 16, ">I", 0xFFFFFFFF),
    "items-claim-more": resource_file([(b"DITL", [resource(1, patched(ITEMS, 0, ">H", 500))])]),
}

FOLDER.mkdir(parents=True, exist_ok=True)
for name, data in SEEDS.items():
    (FOLDER / name).write_bytes(data)
