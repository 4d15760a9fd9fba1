#!/usr/bin/env python3
"""Draws the language module's icons (16 and 32 pixels, 32-bit with alpha) and writes them as .ico files.

Run it after changing a drawing; the .ico files it writes are kept in the repository so that the build
needs no Python.
"""
import math
import struct
import sys
from pathlib import Path

SAMPLES = 4  # supersampling per axis


def disc(cx, cy, r):
    return lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r


def rect(x0, y0, x1, y1):
    return lambda x, y: x0 <= x <= x1 and y0 <= y <= y1


def triangle(ax, ay, bx, by, cx, cy):
    def inside(x, y):
        d1 = (x - bx) * (ay - by) - (ax - bx) * (y - by)
        d2 = (x - cx) * (by - cy) - (bx - cx) * (y - cy)
        d3 = (x - ax) * (cy - ay) - (cx - ax) * (y - ay)
        neg = d1 < 0 or d2 < 0 or d3 < 0
        pos = d1 > 0 or d2 > 0 or d3 > 0
        return not (neg and pos)
    return inside


def bar(x0, y0, x1, y1, half_width):
    """A stroke from (x0, y0) to (x1, y1)."""
    dx, dy = x1 - x0, y1 - y0
    length2 = dx * dx + dy * dy

    def inside(x, y):
        t = max(0.0, min(1.0, ((x - x0) * dx + (y - y0) * dy) / length2))
        px, py = x0 + t * dx, y0 + t * dy
        return (x - px) ** 2 + (y - py) ** 2 <= half_width ** 2
    return inside


# Each icon: layers of (shape in unit coordinates 0..1, colour RGBA), painted in order.
ICONS = {
    "severity-green": [
        (disc(0.5, 0.5, 0.47), (0x1E, 0x8E, 0x3E, 255)),
        (disc(0.5, 0.27, 0.075), (255, 255, 255, 255)),
        (rect(0.43, 0.41, 0.57, 0.78), (255, 255, 255, 255)),
    ],
    "severity-yellow": [
        (triangle(0.5, 0.03, 0.97, 0.94, 0.03, 0.94), (0xF2, 0xB1, 0x0C, 255)),
        (rect(0.44, 0.32, 0.56, 0.66), (0x20, 0x20, 0x20, 255)),
        (rect(0.44, 0.74, 0.56, 0.85), (0x20, 0x20, 0x20, 255)),
    ],
    "severity-red": [
        (disc(0.5, 0.5, 0.47), (0xC6, 0x28, 0x28, 255)),
        (bar(0.3, 0.3, 0.7, 0.7, 0.075), (255, 255, 255, 255)),
        (bar(0.7, 0.3, 0.3, 0.7, 0.075), (255, 255, 255, 255)),
    ],
    "blank": [],
    "user": [
        (disc(0.5, 0.3, 0.2), (0x2F, 0x5D, 0xA8, 255)),
        (lambda x, y: (x - 0.5) ** 2 / 0.16 + (y - 1.0) ** 2 / 0.27 <= 1.0 and y <= 0.97, (0x2F, 0x5D, 0xA8, 255)),
    ],
}


def render(layers, size):
    """Rows of (b, g, r, a) from the top, composited with supersampling."""
    pixels = []
    for py in range(size):
        row = []
        for px in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (px + (sx + 0.5) / SAMPLES) / size
                    y = (py + (sy + 0.5) / SAMPLES) / size
                    colour = (0, 0, 0, 0)
                    for shape, rgba in layers:
                        if shape(x, y):
                            colour = rgba
                    a = colour[3] / 255.0
                    acc[0] += colour[0] * a
                    acc[1] += colour[1] * a
                    acc[2] += colour[2] * a
                    acc[3] += a
            n = SAMPLES * SAMPLES
            alpha = acc[3] / n
            if alpha > 0:
                r, g, b = (round(acc[i] / acc[3]) for i in range(3))
            else:
                r = g = b = 0
            row.append((b, g, r, round(alpha * 255)))
        pixels.append(row)
    return pixels


def icon_image(layers, size):
    pixels = render(layers, size)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    xor = b"".join(bytes(p) for row in reversed(pixels) for p in row)
    mask_row_bytes = ((size + 31) // 32) * 4
    mask = bytearray()
    for row in reversed(pixels):
        bits = bytearray(mask_row_bytes)
        for x, p in enumerate(row):
            if p[3] == 0:
                bits[x // 8] |= 0x80 >> (x % 8)
        mask += bits
    return header + xor + bytes(mask)


def write_icon(path, layers, sizes=(16, 32)):
    images = [icon_image(layers, s) for s in sizes]
    out = struct.pack("<HHH", 0, 1, len(images))
    offset = 6 + 16 * len(images)
    for size, image in zip(sizes, images):
        out += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    out += b"".join(images)
    Path(path).write_bytes(out)


def main():
    directory = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    for name, layers in ICONS.items():
        write_icon(directory / f"{name}.ico", layers)


if __name__ == "__main__":
    main()
