#!/usr/bin/python3
"""Writes korvel's bundled example data from known truths, reproducibly (fixed seeds).

Run from anywhere: /usr/bin/python3 examples/data/generate.py
Every file is synthetic; the truths that made it are written beside it or stated in README.md.
"""
import csv
import math
import os
import random
import struct

HERE = os.path.dirname(os.path.abspath(__file__))

# ---- vertical alignment: grades joined by symmetric parabolic curves ---------------------------
# IPs (station m, level m) and curve lengths (m); the first and last IPs are the ends.
DESIGN_IPS = [(0.0, 100.0, 0.0), (450.0, 109.0, 160.0), (1050.0, 97.0, 240.0),
              (1600.0, 108.0, 200.0), (2000.0, 104.0, 0.0)]
SURVEY_NOISE = 0.02      # m, uniform in [-noise, +noise]
PROPOSED_SHIFT = [(0.0, -0.6), (700.0, 0.8), (1300.0, -0.9), (2000.0, 0.5)]  # design vs ground


def design_level(station, ips=DESIGN_IPS):
    """Level of the alignment: straight grades, each IP rounded by a parabola of its length."""
    for k in range(1, len(ips) - 1):
        s, z, length = ips[k]
        if length > 0 and abs(station - s) <= length / 2:
            g1 = (z - ips[k - 1][1]) / (s - ips[k - 1][0])
            g2 = (ips[k + 1][1] - z) / (ips[k + 1][0] - s)
            start = s - length / 2
            x = station - start
            return z - g1 * length / 2 + g1 * x + (g2 - g1) * x * x / (2 * length)
    for k in range(1, len(ips)):
        if station <= ips[k][0]:
            (s0, z0, _), (s1, z1, _) = ips[k - 1], ips[k]
            return z0 + (z1 - z0) * (station - s0) / (s1 - s0)
    return ips[-1][1]


def piecewise(points, x):
    for (x0, y0), (x1, y1) in zip(points, points[1:]):
        if x0 <= x <= x1:
            return y0 + (y1 - y0) * (x - x0) / (x1 - x0)
    return points[-1][1]


def write_csv(name, header, rows, comment=None):
    with open(os.path.join(HERE, name), "w", newline="", encoding="utf-8") as handle:
        if comment:
            handle.write(f"# {comment}\n")
        writer = csv.writer(handle, lineterminator="\n")
        writer.writerow(header)
        writer.writerows(rows)


def profiles():
    rng = random.Random(1)
    survey = []
    for i in range(0, 2001):
        s = float(i)
        survey.append((f"{s:.1f}", f"{design_level(s) + rng.uniform(-SURVEY_NOISE, SURVEY_NOISE):.3f}"))
    write_csv("survey_profile.csv", ["station", "level"], survey,
              "ground profile surveyed at 1 m: the design of design_ips.csv plus uniform noise of 2 cm")
    write_csv("design_ips.csv", ["station", "level", "curve_length"],
              [(f"{s:.1f}", f"{z:.3f}", f"{l:.1f}") for s, z, l in DESIGN_IPS],
              "the vertical alignment that generated survey_profile.csv")
    proposed = [(f"{s:.1f}", f"{design_level(s) + piecewise(PROPOSED_SHIFT, s):.3f}")
                for s in [x * 10.0 for x in range(0, 201)]]
    write_csv("proposed_profile.csv", ["station", "level"], proposed,
              "a proposed road profile: the ground design shifted by a piecewise-linear amount "
              "that changes sign three times")


def traverse_and_polylines():
    rng = random.Random(2)
    # Two crossing plan polylines: a sine-like centreline and a straight-ish diagonal road.
    a = [(x * 10.0, 500.0 + 120.0 * math.sin(x * 10.0 / 80.0)) for x in range(0, 101)]
    b = [(x * 12.0, 450.0 + x * 1.2 + rng.uniform(-5, 5)) for x in range(0, 84)]
    write_csv("centreline_a.csv", ["x", "y"], [(f"{x:.3f}", f"{y:.3f}") for x, y in a],
              "a winding centreline")
    write_csv("centreline_b.csv", ["x", "y"], [(f"{x:.3f}", f"{y:.3f}") for x, y in b],
              "a second road crossing the first several times")
    # A 3-D string with some levels missing (empty z) for the elevation fill.
    rows = []
    for i in range(0, 41):
        x, y = i * 25.0, 200.0 + i * 5.0
        z = 50.0 + 0.02 * i * math.hypot(25.0, 5.0)
        rows.append((f"{x:.3f}", f"{y:.3f}", "" if i % 5 in (2, 3) else f"{z:.3f}"))
    write_csv("string_3d.csv", ["x", "y", "z"], rows,
              "a 3-D string on a 2% grade (z = 50 + 0.02 * chainage) with levels missing")


def fits():
    rng = random.Random(3)
    cx, cy, r = 2500.0, 1500.0, 350.0
    rows = []
    for i in range(0, 24):
        t = 0.2 + i * 0.05
        rows.append((f"{cx + r * math.cos(t) + rng.gauss(0, 0.005):.4f}",
                     f"{cy + r * math.sin(t) + rng.gauss(0, 0.005):.4f}"))
    write_csv("circle_points.csv", ["x", "y"], rows,
              f"points on the circle centre ({cx}, {cy}) radius {r} with 5 mm noise")
    rows = []
    for i in range(0, 30):
        x, y = rng.uniform(0, 100), rng.uniform(0, 80)
        rows.append((f"{x:.3f}", f"{y:.3f}", f"{12.0 + 0.015 * x - 0.02 * y + rng.gauss(0, 0.003):.4f}"))
    write_csv("plane_points.csv", ["x", "y", "z"], rows,
              "points on the plane z = 12 + 0.015 x - 0.02 y with 3 mm noise")
    # Control points of a similarity transformation: scale, rotation (deg), shift.
    scale, rotation, tx, ty = 1.0004, 12.5, 350000.0, 5200000.0
    c, s = scale * math.cos(math.radians(rotation)), scale * math.sin(math.radians(rotation))
    rows = []
    for i in range(0, 12):
        x, y = rng.uniform(0, 2000), rng.uniform(0, 1500)
        rows.append((f"{x:.3f}", f"{y:.3f}", f"{tx + c * x - s * y + rng.gauss(0, 0.004):.3f}",
                     f"{ty + s * x + c * y + rng.gauss(0, 0.004):.3f}"))
    write_csv("control_points.csv", ["source_x", "source_y", "target_x", "target_y"], rows,
              f"similarity: scale {scale}, rotation {rotation} deg, shift ({tx}, {ty}); 4 mm noise")


def geoid_grid():
    """A small grid of the quadratic surface N = 30 + 0.8 (lat - 45) - 0.5 (lon - 7)
    + 0.05 (lat - 45)(lon - 7): the biquadratic interpolation reproduces it exactly."""
    south, west, step, rows, columns = 44.0, 5.0, 0.25, 17, 21
    with open(os.path.join(HERE, "geoid_demo.bin"), "wb") as handle:
        handle.write(struct.pack("<ddddiii", south, west, step, step, rows, columns, 1))
        for r in range(rows):
            for c in range(columns):
                lat, lon = south + r * step, west + c * step
                n = 30.0 + 0.8 * (lat - 45.0) - 0.5 * (lon - 7.0) + 0.05 * (lat - 45.0) * (lon - 7.0)
                handle.write(struct.pack("<f", n))


if __name__ == "__main__":
    profiles()
    traverse_and_polylines()
    fits()
    geoid_grid()
