#!/usr/bin/env python3
"""Draws ticks and the candles folded from them, one above the other over the same time, as an SVG.

usage: draw-candles.py TICKS.csv CANDLES.csv SECONDS TITLE > picture.svg

TICKS.csv has the columns time and price, CANDLES.csv what `kalvento candles --format csv` writes with the begin of the
window as its time; SECONDS is the length of a candle. It made docs/ticks-to-candles.svg.
"""
import csv
import sys
from datetime import datetime, timedelta
from html import escape

WIDTH, PANEL, VOLUME, LEFT, RIGHT, TOP, GAP, BOTTOM = 960, 190, 60, 72, 16, 44, 46, 30
UP, DOWN, DOT, INK, GRID = "#2a9d63", "#d1495b", "#3d6fb6", "#3b4252", "#d8dee9"


def load(path, columns):
    with open(path, encoding="utf-8", newline="") as file:
        for row in csv.DictReader(file):
            yield [datetime.fromisoformat(row["time"])] + [float(row[name]) for name in columns]


def nice_step(span):
    """A round distance that cuts the span into three to eight pieces."""
    step = 10.0 ** len(str(int(span)))
    while True:
        for factor in (1.0, 0.5, 0.25, 0.2):
            if span / (step * factor) >= 3.5:
                return step * factor
        step /= 10.0


class Picture:
    def __init__(self, begin, end, low, high):
        self.begin, self.span, self.low, self.high = begin, (end - begin).total_seconds(), low, high
        self.parts = []

    def x(self, time):
        return LEFT + (time - self.begin).total_seconds() / self.span * (WIDTH - LEFT - RIGHT)

    def y(self, price, top):
        return top + (self.high - price) / (self.high - self.low) * PANEL

    def add(self, text):
        self.parts.append(text)

    def text(self, x, y, text, anchor="start", size=12, color=INK, weight="normal"):
        self.add(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" fill="{color}" '
                 f'font-weight="{weight}">{escape(text)}</text>')

    def frame(self, top, title):
        self.text(LEFT, top - 8, title, size=13, weight="bold")
        step = nice_step(self.high - self.low)
        price = (self.low // step + 1) * step
        while price < self.high:
            y = self.y(price, top)
            self.add(f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="{GRID}"/>')
            self.text(LEFT - 6, y + 4, f"{price:g}", "end", 11)
            price += step


def main(arguments):
    if len(arguments) != 4:
        sys.exit(__doc__)
    ticks = list(load(arguments[0], ["price"]))
    candles = list(load(arguments[1], ["open", "high", "low", "close", "volume"]))
    length, title = timedelta(seconds=float(arguments[2])), arguments[3]
    begin, end = candles[0][0], candles[-1][0] + length
    prices = [price for _, price in ticks]
    margin = (max(prices) - min(prices)) * 0.04
    picture = Picture(begin, end, min(prices) - margin, max(prices) + margin)

    picture.frame(TOP, f"{len(ticks):,} ticks".replace(",", " "))
    # Ticks that fall on the same spot are drawn once: the picture says the same in a tenth of the bytes.
    spots = sorted({(round(picture.x(time), 0), round(picture.y(price, TOP) * 2) / 2) for time, price in ticks})
    path = "".join(f"M{x:g} {y:g}h0" for x, y in spots)
    picture.add(f'<path d="{path}" stroke="{DOT}" stroke-width="1.6" stroke-linecap="round"/>')

    top = TOP + PANEL + GAP
    picture.frame(top, f"{len(candles)} candles: {title}")
    body = (WIDTH - LEFT - RIGHT) * length.total_seconds() / picture.span * 0.64
    volume_top = top + PANEL + 8
    most = max(candle[5] for candle in candles)
    for time, opened, high, low, closed, volume in candles:
        middle = picture.x(time + length / 2)
        color = UP if closed >= opened else DOWN
        upper, lower = picture.y(max(opened, closed), top), picture.y(min(opened, closed), top)
        picture.add(f'<path d="M{middle:.1f} {picture.y(high, top):.1f}V{picture.y(low, top):.1f}" stroke="{color}"/>')
        picture.add(f'<rect x="{middle - body / 2:.1f}" y="{upper:.1f}" width="{body:.1f}" '
                    f'height="{max(lower - upper, 1):.1f}" fill="{color}"/>')
        bar = volume / most * VOLUME
        picture.add(f'<rect x="{middle - body / 2:.1f}" y="{volume_top + VOLUME - bar:.1f}" width="{body:.1f}" '
                    f'height="{bar:.1f}" fill="{color}" fill-opacity="0.45"/>')
    picture.text(LEFT - 6, volume_top + VOLUME - 4, "volume", "end", 11)

    bottom = volume_top + VOLUME
    for place in range(0, len(candles), max(1, len(candles) // 8)):
        time = candles[place][0]
        x = picture.x(time)
        picture.add(f'<path d="M{x:.1f} {TOP}V{bottom}" stroke="{GRID}" stroke-dasharray="2 4"/>')
        picture.text(x, bottom + 16, f"{time:%H:%M}" if length.total_seconds() >= 60 else f"{time:%H:%M:%S}", "middle", 11)
    height = bottom + BOTTOM
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}" '
          'font-family="sans-serif">')
    print(f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>')
    print("\n".join(picture.parts))
    print("</svg>")


if __name__ == "__main__":
    main(sys.argv[1:])
