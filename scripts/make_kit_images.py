#!/usr/bin/env python3
"""Draws the kit's images into resources/ as PNG files.

  checkbox.png     the consent box, ticked
  blankbox.png     the consent box, empty
  background.png   the banner at the top of the paywall card
  wallet-icon.png  the wallet on the floating button (white on transparent)

Only the standard library: shapes are signed-distance functions, antialiased by
coverage, composited "over", and written by a minimal PNG encoder (zlib,
struct). Run it from anywhere: python3 scripts/make_kit_images.py
"""

import math
import os
import struct
import zlib

RESOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources")

BLUE = (40, 128, 235)  # the floating button's colour
GREY = (154, 160, 166)
WHITE = (255, 255, 255)


class Canvas:
    def __init__(self, width, height):
        self.width = width
        self.height = height
        self.pixels = [[0.0, 0.0, 0.0, 0.0] for _ in range(width * height)]  # premultiplied

    def paint(self, distance, color, alpha=1.0):
        """Composites `color` over the canvas where distance(x, y) < 0."""
        r, g, b = (c / 255.0 for c in color)
        for y in range(self.height):
            for x in range(self.width):
                d = distance(x + 0.5, y + 0.5)
                coverage = min(1.0, max(0.0, 0.5 - d)) * alpha
                if coverage <= 0:
                    continue
                p = self.pixels[y * self.width + x]
                keep = 1.0 - coverage
                p[0] = r * coverage + p[0] * keep
                p[1] = g * coverage + p[1] * keep
                p[2] = b * coverage + p[2] * keep
                p[3] = coverage + p[3] * keep

    def paint_gradient(self, top_left, bottom_right):
        for y in range(self.height):
            for x in range(self.width):
                t = (x / self.width + y / self.height) / 2
                p = self.pixels[y * self.width + x]
                for i in range(3):
                    p[i] = (top_left[i] + (bottom_right[i] - top_left[i]) * t) / 255.0
                p[3] = 1.0

    def png(self):
        rows = bytearray()
        for y in range(self.height):
            rows.append(0)  # filter: none
            for x in range(self.width):
                r, g, b, a = self.pixels[y * self.width + x]
                if a > 0:
                    r, g, b = r / a, g / a, b / a
                rows += bytes(max(0, min(255, round(v * 255))) for v in (r, g, b, a))

        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)  # 8-bit RGBA
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
                + chunk(b"IEND", b""))


def rounded_rect(x0, y0, x1, y1, radius):
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    hx, hy = (x1 - x0) / 2 - radius, (y1 - y0) / 2 - radius

    def distance(x, y):
        qx, qy = abs(x - cx) - hx, abs(y - cy) - hy
        outside = math.hypot(max(qx, 0), max(qy, 0))
        return outside + min(max(qx, qy), 0) - radius

    return distance


def ring(shape, width):
    return lambda x, y: abs(shape(x, y)) - width / 2


def circle(cx, cy, radius):
    return lambda x, y: math.hypot(x - cx, y - cy) - radius


def segment(ax, ay, bx, by, width):
    def distance(x, y):
        px, py, vx, vy = x - ax, y - ay, bx - ax, by - ay
        t = max(0.0, min(1.0, (px * vx + py * vy) / (vx * vx + vy * vy)))
        return math.hypot(px - vx * t, py - vy * t) - width / 2

    return distance


def union(*shapes):
    return lambda x, y: min(shape(x, y) for shape in shapes)


def subtract(shape, cut):
    return lambda x, y: max(shape(x, y), -cut(x, y))


def checkbox():
    canvas = Canvas(64, 64)
    canvas.paint(rounded_rect(4, 4, 60, 60, 10), BLUE)
    tick = union(segment(17, 33, 28, 44, 7), segment(28, 44, 48, 21, 7))
    canvas.paint(tick, WHITE)
    return canvas


def blankbox():
    canvas = Canvas(64, 64)
    box = rounded_rect(6, 6, 58, 58, 9)
    canvas.paint(box, WHITE)
    canvas.paint(ring(box, 4), GREY)
    return canvas


def background():
    canvas = Canvas(750, 348)
    canvas.paint_gradient((40, 128, 235), (92, 60, 200))
    for cx, cy, r, a in ((640, 60, 150, 0.12), (90, 330, 120, 0.10), (560, 300, 70, 0.14)):
        canvas.paint(circle(cx, cy, r), WHITE, a)
    # A page of an article: a sheet with a headline and lines of text.
    canvas.paint(rounded_rect(230, 70, 520, 300, 14), WHITE, 0.95)
    canvas.paint(rounded_rect(260, 100, 490, 126, 6), BLUE)
    for i, end in enumerate((490, 470, 485, 430, 480, 400)):
        y = 150 + i * 22
        canvas.paint(rounded_rect(260, y, end, y + 9, 4.5), GREY)
    # A coin leaning on the sheet.
    canvas.paint(circle(520, 270, 46), (245, 190, 50))
    canvas.paint(ring(circle(520, 270, 34), 5), (215, 150, 20))
    return canvas


def wallet_icon():
    canvas = Canvas(80, 80)
    body = rounded_rect(12, 22, 68, 64, 8)
    pocket = rounded_rect(46, 36, 72, 52, 6)
    canvas.paint(subtract(body, pocket), WHITE)
    canvas.paint(ring(pocket, 3), WHITE)
    canvas.paint(circle(55, 44, 3.5), WHITE)
    canvas.paint(segment(18, 18, 56, 14, 5), WHITE)  # the card peeking out
    return canvas


def main():
    for name, draw in (("checkbox", checkbox), ("blankbox", blankbox), ("background", background),
                       ("wallet-icon", wallet_icon)):
        path = os.path.join(RESOURCES, name + ".png")
        with open(path, "wb") as file:
            file.write(draw().png())
        print(os.path.normpath(path))


if __name__ == "__main__":
    main()
