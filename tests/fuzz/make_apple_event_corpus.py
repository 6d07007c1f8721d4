#!/usr/bin/env python3
# Licence: MIT, see LICENSE.
"""Writes the seeds of fuzz_apple_event: bodies of messages, good ones and such as nearly are."""
import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus" / "fuzz_apple_event"


def item(keyword, kind, data=b""):
    padding = b"\0" * (-len(data) % 4)
    return keyword + kind + struct.pack(">I", len(data)) + data + padding


def block(*items):
    return struct.pack(">I", len(items)) + b"".join(items)


def event(attributes, *parameters):
    first = b"".join(attributes)
    return (struct.pack(">4I", 0x61650001, len(attributes), len(first), len(parameters))
            + first + b"".join(parameters))


def attributes(event_class, event_id, address=item(b"addr", b"psn ", struct.pack(">2I", 0, 5)),
               wants_reply=True):
    return [item(b"evcl", b"type", event_class), item(b"evid", b"type", event_id),
            item(b"rtid", b"shor", struct.pack(">h", 7)),
            item(b"tran", b"long", struct.pack(">i", 0)), address,
            item(b"repq", b"bool", bytes([wants_reply])),
            item(b"timo", b"long", struct.pack(">i", 3600)),
            item(b"inte", b"long", struct.pack(">i", 0x30)),
            item(b"esrc", b"shor", struct.pack(">h", 3)),
            item(b"from", b"psn ", struct.pack(">2I", 0, 6))]


def deep(levels):
    inner = block()
    for _ in range(levels - 1):
        inner = block(item(b"****", b"list", inner))
    return inner


PORT = item(b"addr", b"port", struct.pack(">I", 0x503))
NUMBERS = [item(b"bool", b"bool", b"\1"), item(b"shor", b"shor", struct.pack(">h", -2)),
           item(b"ushr", b"ushr", b"\xff\xfe"), item(b"long", b"long", struct.pack(">i", -3)),
           item(b"magn", b"magn", b"\xff\xff\xff\xff"), item(b"comp", b"comp", b"\x80" + b"\0" * 7),
           item(b"ucom", b"ucom", b"\xff" * 8), item(b"sing", b"sing", struct.pack(">f", 1.5)),
           item(b"doub", b"doub", struct.pack(">d", 1e300)), item(b"true", b"true"),
           item(b"fals", b"fals"), item(b"null", b"null")]
TEXTS = [item(b"numb", b"TEXT", b"-12.5e3"), item(b"code", b"TEXT", b"Mcam"),
         item(b"trut", b"TEXT", b"true"), item(b"utxt", b"utxt", b"\0h\0i"),
         item(b"none", b"TEXT"), item(b"type", b"type", b"Mcam"), item(b"enum", b"enum", b"yes ")]
QUIT = event(attributes(b"aevt", b"quit", PORT))
SEEDS = {
    "quit": QUIT,
    "alert": event(attributes(b"QrlP", b"Mcam", PORT)),
    "no-reply": event(attributes(b"QrlP", b"Mcam", PORT, wants_reply=False)),
    "reply": event(attributes(b"aevt", b"ansr", PORT, wants_reply=False)),
    "reply-with-error": event(attributes(b"aevt", b"ansr", PORT, wants_reply=False),
                              item(b"errn", b"long", struct.pack(">i", -1708)),
                              item(b"errs", b"TEXT", b"not handled")),
    "numbers": event(attributes(b"test", b"nums"), *NUMBERS),
    "texts": event(attributes(b"test", b"text"), *TEXTS),
    "arrays": event(attributes(b"test", b"arry"),
                    item(b"long", b"long", struct.pack(">3i", 1, 2, 3)),
                    item(b"odd ", b"shor", b"\0\1\0\2\3"),
                    item(b"psn ", b"psn ", struct.pack(">2I", 1, 2))),
    "nested": event(attributes(b"test", b"nest"),
                    item(b"list", b"list", block(item(b"****", b"TEXT", b"a"),
                                                 item(b"****", b"reco", block(*NUMBERS[:3])))),
                    item(b"evnt", b"aevt", QUIT),
                    item(b"one ", b"list", block(item(b"****", b"TEXT", b"12")))),
    "deepest": event(attributes(b"test", b"deep"), item(b"deep", b"list", deep(63))),
    "too-deep": event(attributes(b"test", b"deep"), item(b"deep", b"list", deep(64))),
    "ports": event(attributes(b"test", b"port", PORT)
                   + [item(b"repp", b"port", struct.pack(">I", 0x603))],
                   item(b"port", b"port", struct.pack(">I", 0x703))),
    "optional": event(attributes(b"test", b"optk")
                      + [item(b"optk", b"list", block(item(b"****", b"keyw", b"one ")))],
                      item(b"one ", b"TEXT", b"1"), item(b"two ", b"TEXT", b"2")),
    "twice": event(attributes(b"test", b"twin"), item(b"twin", b"TEXT", b"a"),
                   item(b"twin", b"TEXT", b"b")),
    "cut-short": event(attributes(b"QrlP", b"Mcam"), item(b"----", b"TEXT", b"hello"))[:-3],
    "too-long": QUIT + b"\0\0\0\0",
    "without-address": event(attributes(b"QrlP", b"Mcam", b"")[:4]),
    "empty": b"",
}

for name, body in SEEDS.items():
    (FOLDER / name).write_bytes(body)
