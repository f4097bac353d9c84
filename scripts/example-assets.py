#!/usr/bin/env python3
"""Draws the images of the sample document (examples/document.json) into examples/assets/.

Plain RGBA PNGs written with zlib and struct alone, so that the sample needs nothing from outside
the repository. Run it again after changing a drawing: the output is the same bytes every time.
"""
import math
import struct
import sys
import zlib
from pathlib import Path

BRAND = (0x3D, 0x5A, 0xFE)
INK = (0x1B, 0x1F, 0x2A)
WHITE = (0xFF, 0xFF, 0xFF)


def png(width, height, pixel):
    """PNG bytes of an image whose pixel (x, y) is an (r, g, b, a) tuple."""
    rows = bytearray()
    for y in range(height):
        rows.append(0)  # filter: none
        for x in range(width):
            rows.extend(pixel(x, y))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))


def mix(a, b, t):
    return tuple(round(a[i] + (b[i] - a[i]) * t) for i in range(3))


def hero(x, y):
    # A diagonal brand gradient with three soft circles: the welcome screen's picture.
    w, h = 240, 150
    t = (x / w + y / h) / 2
    r, g, b = mix(BRAND, (0x9B, 0x5C, 0xF6), t)
    for cx, cy, radius in ((60, 50, 34), (170, 95, 44), (120, 30, 16)):
        d = math.hypot(x - cx, y - cy)
        if d < radius:
            r, g, b = mix((r, g, b), WHITE, 0.25 * (1 - d / radius))
    return (r, g, b, 255)


def logo(x, y):
    # A brand disc with a white "V".
    c = 23.5
    if math.hypot(x - c, y - c) > 23:
        return (0, 0, 0, 0)
    if 12 <= y <= 34:
        half = 11 - (y - 12) / 2
        if abs(abs(x - c) - half) < 2.2:
            return WHITE + (255,)
    return BRAND + (255,)


def check(x, y):
    # A tick, drawn as two thick strokes.
    def near(ax, ay, bx, by):
        dx, dy = bx - ax, by - ay
        t = max(0, min(1, ((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy)))
        return math.hypot(x - (ax + t * dx), y - (ay + t * dy)) < 1.6

    return WHITE + (255,) if near(3, 8, 6.5, 11.5) or near(6.5, 11.5, 13, 4) else BRAND + (255,)


def tab_home(x, y):
    # A house: a roof and a body with a door.
    roof = y <= 11 and abs(x - 11.5) <= y + 1 and abs(x - 11.5) >= y - 2
    body = 11 <= y <= 20 and 5 <= x <= 18
    edge = body and (x in (5, 18) or y in (11, 20) or (y >= 14 and x in (9, 14)) or (y == 14 and 9 <= x <= 14))
    return INK + (255,) if roof or edge else (0, 0, 0, 0)


def tab_welcome(x, y):
    # A star of five points.
    dx, dy = x - 11.5, y - 12
    angle = math.atan2(dy, dx)
    radius = 10 * (0.55 + 0.45 * math.cos(5 * (angle + math.pi / 2)))
    return INK + (255,) if math.hypot(dx, dy) <= radius else (0, 0, 0, 0)


IMAGES = {
    "hero.png": (240, 150, hero),
    "logo.png": (48, 48, logo),
    "check.png": (16, 16, check),
    "tab-home.png": (24, 24, tab_home),
    "tab-welcome.png": (24, 24, tab_welcome),
}


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent / "examples" / "assets"
    folder.mkdir(parents=True, exist_ok=True)
    for name, (width, height, pixel) in IMAGES.items():
        (folder / name).write_bytes(png(width, height, pixel))
        print(f"{folder / name}: {width}x{height}")


if __name__ == "__main__":
    main()
