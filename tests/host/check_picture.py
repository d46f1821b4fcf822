#!/usr/bin/env python3
"""Looks at a browser's picture of the page: usage: check_picture.py FILE.png light|dark

Prints one line for each fault: the ground has the scheme's colour, there is writing in its ink, the bars have the colours
of several agents, and the heat maps the ramp's.
"""

import collections
import struct
import sys
import zlib


def pixels(path):
    """Width, height and the rows of an 8-bit RGB or RGBA picture, without its alpha."""
    data = open(path, "rb").read()
    at, packed = 8, b""
    while at < len(data):
        (size,) = struct.unpack(">I", data[at:at + 4])
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6), "an unusual picture"
        elif kind == b"IDAT":
            packed += body
        at += 12 + size
    channels = 3 if colour == 2 else 4
    stride = width * channels
    raw = zlib.decompress(packed)
    rows, before = [], bytearray(stride)
    for y in range(height):
        method = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = line[x - channels] if x >= channels else 0
            corner = before[x - channels] if x >= channels else 0
            if method == 1:
                line[x] = (line[x] + left) & 255
            elif method == 2:
                line[x] = (line[x] + before[x]) & 255
            elif method == 3:
                line[x] = (line[x] + (left + before[x]) // 2) & 255
            elif method == 4:
                estimate = left + before[x] - corner
                nearest = min((abs(estimate - left), 0, left), (abs(estimate - before[x]), 1, before[x]),
                              (abs(estimate - corner), 2, corner))
                line[x] = (line[x] + nearest[2]) & 255
        rows.append([tuple(line[x:x + 3]) for x in range(0, stride, channels)])
        before = line
    return rows


COLOURS = {  # of page.css and HeatLevels.cpp
    "light": {"ground": "fbf9f5", "ink": "221d18", "Claude's bars": "d6783f", "Codex's bars": "34405c",
              "Gemini's bars": "2a8c66", "the peak of a heat map": "c4500b", "read from cache": "d9d0c0"},
    "dark": {"ground": "161310", "ink": "ede7dd", "Claude's bars": "e88b52", "Codex's bars": "c3cbe0",
             "Gemini's bars": "45b48a", "the peak of a heat map": "ffa45c", "read from cache": "4d463d"},
}
LEAST = {"ground": 0.6, "ink": 0.003, "read from cache": 0.003}


def main():
    counts = collections.Counter()
    for row in pixels(sys.argv[1]):
        counts.update(row)
    whole = sum(counts.values())
    for name, colour in COLOURS[sys.argv[2]].items():
        wanted = bytes.fromhex(colour)
        share = sum(count for pixel, count in counts.items() if max(abs(a - b) for a, b in zip(pixel, wanted)) <= 3) / whole
        if share < LEAST.get(name, 0.00005):
            print(f"{name}: only {share:.5%} of the picture is #{colour}")


main()
