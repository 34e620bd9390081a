#!/usr/bin/python3
"""End-to-end tests of the korvel program: run it on data whose truth is known and compare.

Usage: test_korvel.py KORVEL DATA_DIR (then unittest arguments).
"""
import csv
import io
import math
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

KORVEL = None
DATA = None


def run(*args, stdin=None):
    """Runs korvel; returns (exit status, standard output, standard error)."""
    done = subprocess.run([KORVEL, *args], input=stdin, capture_output=True, text=True,
                          timeout=120, check=False)
    return done.returncode, done.stdout, done.stderr


def csv_sections(text):
    """CSV output split into its '#'-titled sections: {title: [rows as dicts]}."""
    sections = {}
    title = None
    lines = []
    for line in text.splitlines() + ["# end"]:
        if line.startswith("# "):
            if title is not None and lines:
                sections[title] = list(csv.DictReader(io.StringIO("\n".join(lines))))
            title, lines = line[2:], []
        elif line.strip():
            lines.append(line)
    return sections


class Temporary(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="korvel-test-")

    def tearDown(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as handle:
            handle.write(text)
        return path


class Traverse(Temporary):
    def test_legs_match_the_coordinates(self):
        status, out, err = run("traverse", os.path.join(DATA, "traverse.csv"), "--csv")
        self.assertEqual(status, 0, err)
        with open(os.path.join(DATA, "traverse.csv"), encoding="utf-8") as handle:
            rows = list(csv.DictReader(line for line in handle if not line.startswith("#")))
        legs = next(v for k, v in csv_sections(out).items() if k.startswith("legs"))
        self.assertEqual(len(legs), len(rows) - 1)
        for leg, a, b in zip(legs, rows, rows[1:]):
            de = float(b["easting"]) - float(a["easting"])
            dn = float(b["northing"]) - float(a["northing"])
            self.assertAlmostEqual(float(leg["distance_m"]), math.hypot(de, dn), places=3)
            azimuth = math.degrees(math.atan2(de, dn)) % 360.0
            self.assertAlmostEqual(float(leg["azimuth_deg"]), azimuth, places=5)

    def test_circle_through_stations_on_a_known_circle(self):
        radius, ce, cn = 250.0, 1000.0, 2000.0
        lines = ["name,easting,northing"]
        for i, angle in enumerate([0.1, 0.3, 0.55, 0.8]):
            lines.append(f"S{i},{ce + radius * math.cos(angle)},{cn + radius * math.sin(angle)}")
        status, out, err = run("traverse", self.write("arc.csv", "\n".join(lines) + "\n"), "--csv")
        self.assertEqual(status, 0, err)
        circles = next(v for k, v in csv_sections(out).items() if k.startswith("circle"))
        for row in circles:
            self.assertAlmostEqual(float(row["radius_m"]), radius, places=3)
            self.assertAlmostEqual(float(row["centre_e"]), ce, places=3)
            self.assertAlmostEqual(float(row["centre_n"]), cn, places=3)


def read_table(path, columns):
    """Numeric columns of a CSV file with '#' comment lines."""
    with open(path, encoding="utf-8") as handle:
        rows = list(csv.DictReader(line for line in handle if not line.startswith("#")))
    return [[float(row[c]) for c in columns] for row in rows]


def design_level(ips, x):
    """Level of an alignment of (station, level, curve length) IPs at station x."""
    for k in range(1, len(ips) - 1):
        s, z, length = ips[k]
        if length > 0 and abs(x - s) <= length / 2:
            g1 = (z - ips[k - 1][1]) / (s - ips[k - 1][0])
            g2 = (ips[k + 1][1] - z) / (ips[k + 1][0] - s)
            t = x - (s - length / 2)
            return z - g1 * length / 2 + g1 * t + (g2 - g1) * t * t / (2 * length)
    for (s0, z0, _), (s1, z1, _) in zip(ips, ips[1:]):
        if s0 <= x <= s1:
            return z0 + (z1 - z0) * (x - s0) / (s1 - s0)
    return ips[-1][1]


def png_size(path):
    """Width and height of a PNG file from its header."""
    with open(path, "rb") as handle:
        header = handle.read(24)
    assert header[:8] == b"\x89PNG\r\n\x1a\n"
    return int.from_bytes(header[16:20], "big"), int.from_bytes(header[20:24], "big")


class PlotChecks(Temporary):
    def render(self, svg):
        """Renders an SVG plot to PNG and checks it is a non-empty picture of the page size."""
        if shutil.which("rsvg-convert") is None:
            self.skipTest("rsvg-convert (librsvg2-bin) is not installed")
        png = svg[:-4] + ".png"
        subprocess.run(["rsvg-convert", svg, "-o", png], check=True, timeout=60)
        self.assertGreater(os.path.getsize(png), 5000)
        self.assertEqual(png_size(png), (1000, 600))


class ProfileFit(PlotChecks):
    def test_alignment_follows_the_known_design(self):
        svg = os.path.join(self.folder, "profile.svg")
        survey = os.path.join(DATA, "survey_profile.csv")
        status, out, err = run("profile", "fit", survey, "--up-tol", "0.1", "--lo-tol", "0.1",
                               "--csv", "--svg", svg)
        self.assertEqual(status, 0, err)
        ips = [[float(r["station"]), float(r["level"]), float(r["curve_length"])]
               for r in csv.DictReader(line for line in out.splitlines() if not line.startswith("#"))]
        self.assertGreaterEqual(len(ips), 5)
        summary = [line for line in out.splitlines() if line.startswith("# ")][-1]
        self.assertIn("0 of 2001 points outside the envelope", summary)
        truth = read_table(os.path.join(DATA, "design_ips.csv"), ["station", "level", "curve_length"])
        # The fitted alignment stays within tolerance + survey noise of the design everywhere,
        # and every design IP has a fitted IP near it.
        for x in range(0, 2001, 5):
            self.assertLess(abs(design_level(ips, x) - design_level(truth, x)), 0.1 + 0.02 + 1e-6, x)
        for s, _, _ in truth:
            self.assertLess(min(abs(s - ip[0]) for ip in ips), 80.0, s)
        self.render(svg)

    def test_bad_profiles(self):
        cases = [("station,level\n0,1\n5,2\n5,3\n", "does not increase"),
                 ("station,level\n0,1\n", "at least two"),
                 ("station,height\n0,1\n1,2\n", "missing column 'level'")]
        for text, fragment in cases:
            status, _, err = run("profile", "fit", self.write("p.csv", text))
            self.assertEqual(status, 1, text)
            self.assertIn(fragment, err)


class Geoid(Temporary):
    @staticmethod
    def surface(lat, lon):
        return 30 + 0.8 * (lat - 45) - 0.5 * (lon - 7) + 0.05 * (lat - 45) * (lon - 7)

    def test_grid_reproduces_its_analytic_surface(self):
        grid = os.path.join(DATA, "geoid_demo.bin")
        positions = [(44.0, 5.0), (46.13, 7.71), (47.99, 9.99), (48.0, 10.0), (45.5, 8.25)]
        text = "lat,lon\n" + "".join(f"{a},{b}\n" for a, b in positions)
        status, out, err = run("geoid", "--grid", grid, "--input", self.write("p.csv", text), "--csv")
        self.assertEqual(status, 0, err)
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertEqual(len(rows), len(positions))
        for row, (lat, lon) in zip(rows, positions):
            self.assertAlmostEqual(float(row["undulation"]), self.surface(lat, lon), places=3)
        status, out, err = run("geoid", "--grid", grid, "46", "352", "--west")  # 352 W = 8 E
        self.assertEqual(status, 0, err)
        self.assertIn(f"{self.surface(46, 8):.4f}", out)

    def test_bad_grids_and_positions(self):
        grid = os.path.join(DATA, "geoid_demo.bin")
        status, _, err = run("geoid", "--grid", os.path.join(DATA, "traverse.csv"), "46", "7")
        self.assertEqual((status, "not a geoid grid" in err), (1, True))
        status, _, err = run("geoid", "--grid", grid, "20", "7")
        self.assertEqual((status, "outside the geoid grid" in err), (1, True))
        status, _, err = run("geoid", "--grid", grid, "--input", self.write("p.csv", "lat,lon\n46,x\n"))
        self.assertEqual(status, 1)
        self.assertIn("p.csv:2: lon 'x' is not a number", err)
        status, _, _ = run("geoid", "46", "7")
        self.assertEqual(status, 2)


class Transform(Temporary):
    def test_fit_recovers_the_generating_similarity_and_apply_uses_it(self):
        params = os.path.join(self.folder, "params.csv")
        status, out, err = run("transform", "fit", os.path.join(DATA, "control_points.csv"),
                               "--csv", "--params-out", params)
        self.assertEqual(status, 0, err)
        sections = csv_sections(out)
        values = {row["parameter"]: float(row["value"])
                  for row in next(v for k, v in sections.items() if k.endswith("parameters"))}
        self.assertAlmostEqual(values["scale"], 1.0004, delta=1e-5)
        self.assertAlmostEqual(values["rotation_deg"], 12.5, delta=1e-3)
        self.assertAlmostEqual(values["tx"], 350000.0, delta=0.02)
        self.assertAlmostEqual(values["ty"], 5200000.0, delta=0.02)
        residuals = next(v for k, v in sections.items() if k.startswith("residuals"))
        self.assertEqual(len(residuals), 12)
        self.assertTrue(all(abs(float(r["residual_x"])) < 0.02 for r in residuals))
        status, out, err = run("transform", "apply", self.write("p.csv", "x,y\n0,0\n1000,0\n"),
                               "--params-file", params, "--csv")
        self.assertEqual(status, 0, err)
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertAlmostEqual(float(rows[0]["X"]), 350000.0, delta=0.02)
        # (1000, 0) lands 1000.4 m from the origin's image, at 12.5 degrees.
        dx = float(rows[1]["X"]) - float(rows[0]["X"])
        dy = float(rows[1]["Y"]) - float(rows[0]["Y"])
        self.assertAlmostEqual(math.hypot(dx, dy), 1000.4, delta=0.01)
        self.assertAlmostEqual(math.degrees(math.atan2(dy, dx)), 12.5, delta=1e-3)

    def test_affine_and_projective_models_and_errors(self):
        for model in ("affine", "projective"):
            status, out, err = run("transform", "fit", os.path.join(DATA, "control_points.csv"),
                                   "--model", model)
            self.assertEqual(status, 0, err)
        status, _, err = run("transform", "fit", self.write("c.csv", "source_x,source_y,target_x,target_y\n0,0,1,1\n"))
        self.assertEqual(status, 1)
        self.assertIn("at least 2 control points", err)
        status, _, _ = run("transform", "fit", os.path.join(DATA, "control_points.csv"), "--model", "conformal")
        self.assertEqual(status, 2)
        status, _, _ = run("transform", "apply", self.write("p.csv", "x,y\n0,0\n"), "--params", "1,2,3")
        self.assertEqual(status, 2)


class Fits(PlotChecks):
    @staticmethod
    def parameters(out):
        sections = csv_sections(out)
        first = next(iter(sections.values()))
        return {row["parameter"]: float(row["value"]) for row in first}

    def test_circle_recovers_the_generating_circle_and_draws_it(self):
        svg = os.path.join(self.folder, "circle.svg")
        status, out, err = run("fit", "circle", os.path.join(DATA, "circle_points.csv"), "--csv", "--svg", svg)
        self.assertEqual(status, 0, err)
        p = self.parameters(out)
        self.assertAlmostEqual(p["centre_x"], 2500.0, delta=0.1)
        self.assertAlmostEqual(p["centre_y"], 1500.0, delta=0.1)
        self.assertAlmostEqual(p["radius"], 350.0, delta=0.1)
        self.assertLess(p["rms_residual"], 0.02)
        self.render(svg)

    def test_plane_and_line(self):
        status, out, err = run("fit", "plane", os.path.join(DATA, "plane_points.csv"), "--csv")
        self.assertEqual(status, 0, err)
        p = self.parameters(out)
        self.assertAlmostEqual(p["a (dz/dx)"], 0.015, delta=2e-4)
        self.assertAlmostEqual(p["b (dz/dy)"], -0.02, delta=2e-4)
        self.assertAlmostEqual(p["c"], 12.0, delta=0.01)
        points = "x,y\n" + "".join(f"{x},{2 * x + 1}\n" for x in range(0, 50, 5))
        status, out, err = run("fit", "line", self.write("l.csv", points), "--csv")
        self.assertEqual(status, 0, err)
        p = self.parameters(out)
        self.assertAlmostEqual(math.tan(math.radians(p["direction_deg"])), 2.0, places=6)
        self.assertAlmostEqual(p["length"], math.hypot(45, 90), places=4)
        self.assertLess(p["rms_residual"], 1e-9)

    def test_degenerate_input(self):
        status, _, err = run("fit", "circle", self.write("c.csv", "x,y\n0,0\n1,1\n2,2\n3,3\n"))
        self.assertEqual(status, 1)
        self.assertIn("no circle fits", err)
        status, _, err = run("fit", "plane", self.write("p.csv", "x,y,z\n0,0,1\n1,1,2\n"))
        self.assertEqual(status, 1)
        self.assertIn("at least 3 points", err)


def segment_crossings(a, b):
    """Every proper crossing of two polylines with the chainage on each (a plain double loop)."""
    out = []
    along_a = 0.0
    for (x1, y1), (x2, y2) in zip(a, a[1:]):
        la = math.hypot(x2 - x1, y2 - y1)
        along_b = 0.0
        for (x3, y3), (x4, y4) in zip(b, b[1:]):
            lb = math.hypot(x4 - x3, y4 - y3)
            d = (x2 - x1) * (y4 - y3) - (y2 - y1) * (x4 - x3)
            if d != 0:
                t = ((x3 - x1) * (y4 - y3) - (y3 - y1) * (x4 - x3)) / d
                u = ((x3 - x1) * (y2 - y1) - (y3 - y1) * (x2 - x1)) / d
                if 0 <= t <= 1 and 0 <= u <= 1:
                    out.append((along_a + t * la, along_b + u * lb))
            along_b += lb
        along_a += la
    return out


class Polylines(PlotChecks):
    def test_intersect_finds_every_crossing_with_both_chainages(self):
        a = read_table(os.path.join(DATA, "centreline_a.csv"), ["x", "y"])
        b = read_table(os.path.join(DATA, "centreline_b.csv"), ["x", "y"])
        expected = segment_crossings(a, b)
        self.assertGreaterEqual(len(expected), 3)
        svg = os.path.join(self.folder, "crossings.svg")
        status, out, err = run("intersect", os.path.join(DATA, "centreline_a.csv"),
                               os.path.join(DATA, "centreline_b.csv"), "--csv", "--svg", svg)
        self.assertEqual(status, 0, err)
        rows = list(csv.DictReader(line for line in out.splitlines() if not line.startswith("#")))
        self.assertEqual(len(rows), len(expected))
        for row, (ca, cb) in zip(rows, expected):
            self.assertAlmostEqual(float(row["chainage_a"]), ca, places=3)
            self.assertAlmostEqual(float(row["chainage_b"]), cb, places=3)
        self.render(svg)

    def test_profile_fill_restores_the_grade(self):
        status, out, err = run("profile", "fill", os.path.join(DATA, "string_3d.csv"), "--csv")
        self.assertEqual(status, 0, err)
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertEqual(len(rows), 41)
        chainage = 0.0
        previous = None
        for row in rows:
            x, y, z = float(row["x"]), float(row["y"]), float(row["z"])
            if previous is not None:
                chainage += math.hypot(x - previous[0], y - previous[1])
            previous = (x, y)
            self.assertAlmostEqual(z, 50 + 0.02 * chainage, delta=0.002)  # data rounded to 1 mm
        self.assertTrue(any(row["filled"] == "1" for row in rows))
        status, _, err = run("profile", "fill", self.write("z.csv", "x,y,z\n0,0,\n1,1,\n"))
        self.assertEqual(status, 1)
        self.assertIn("no point has an elevation", err)


class ProfileDiff(PlotChecks):
    def test_areas_match_an_integration_of_the_two_profiles(self):
        a = read_table(os.path.join(DATA, "proposed_profile.csv"), ["station", "level"])
        b = read_table(os.path.join(DATA, "survey_profile.csv"), ["station", "level"])

        def level(p, x):
            for (x0, y0), (x1, y1) in zip(p, p[1:]):
                if x <= x1:
                    return y0 + (y1 - y0) * (x - x0) / (x1 - x0)
            return p[-1][1]

        # The survey has a vertex every metre: integrate at 0.05 m.
        above = below = 0.0
        steps = 40000
        for k in range(steps):
            x = (k + 0.5) * 2000.0 / steps
            d = level(a, x) - level(b, x)
            if d > 0:
                above += d * 2000.0 / steps
            else:
                below -= d * 2000.0 / steps
        svg = os.path.join(self.folder, "diff.svg")
        status, out, err = run("profile", "diff", os.path.join(DATA, "proposed_profile.csv"),
                               os.path.join(DATA, "survey_profile.csv"), "--csv", "--svg", svg)
        self.assertEqual(status, 0, err)
        sections = csv_sections(out)
        totals = {r["measure"]: float(r["value"]) for r in next(v for k, v in sections.items() if k.startswith("totals"))}
        self.assertAlmostEqual(totals["area_above_m2"], above, delta=0.01 * above)
        self.assertAlmostEqual(totals["area_below_m2"], below, delta=0.01 * below)
        self.assertAlmostEqual(totals["length_above_m"] + totals["length_below_or_level_m"], 2000.0, places=3)
        zones = next(v for k, v in sections.items() if k.startswith("zones"))
        crossings = next(v for k, v in sections.items() if k.startswith("crossings"))
        self.assertEqual(len(zones), len(crossings) + 1)
        self.assertAlmostEqual(sum(float(z["signed_area_m2"]) for z in zones),
                               totals["area_above_m2"] - totals["area_below_m2"], delta=0.01)
        self.assertGreaterEqual(len(crossings), 3)  # the shift changes sign three times
        self.render(svg)


class Spiral(unittest.TestCase):
    def test_setting_out_table_follows_the_clothoid(self):
        a = 200.0
        status, out, err = run("spiral", "--A", str(a), "--length", "150", "--step", "10", "--csv")
        self.assertEqual(status, 0, err)
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertEqual(len(rows), 16)
        previous = None
        for row in rows:
            s = float(row["chainage"])
            # Tangent direction s^2 / (2 A^2); radius A^2 / s; chord steps shorter than the arc.
            self.assertAlmostEqual(math.radians(float(row["tangent_deg"])), s * s / (2 * a * a), places=6)
            if s > 0:
                self.assertAlmostEqual(float(row["radius"]), a * a / s, places=2)
            point = (float(row["x"]), float(row["y"]))
            if previous is not None:
                chord = math.hypot(point[0] - previous[0], point[1] - previous[1])
                self.assertLessEqual(chord, 10.0 + 1e-4)
                self.assertGreater(chord, 9.99)
            previous = point
        status, _, _ = run("spiral", "--A", "0", "--length", "10")
        self.assertEqual(status, 2)


class Convert(unittest.TestCase):
    def test_round_trips_and_known_values(self):
        cases = [
            (("45.5", "--from", "deg", "--to", "dms"), "45d30'00.00\""),
            (("S12:30:00W", "--from", "bearing", "--to", "deg"), "192.5000000000"),
            (("192.5", "--from", "deg", "--to", "bearing"), "S 12d30'00.00\" W"),
            (("3937", "--from", "usft", "--to", "m"), "1200.000000"),
            (("1", "--from", "ft", "--to", "m"), "0.304800"),
            (("200", "--from", "grad", "--to", "deg"), "180.0000000000"),
        ]
        for args, expected in cases:
            status, out, err = run("convert", *args)
            self.assertEqual(status, 0, err)
            self.assertEqual(out.strip(), expected, args)

    def test_usage_errors_exit_2(self):
        for args in [("1", "--from", "m", "--to", "deg"), ("1", "--from", "parsec", "--to", "m"),
                     ("abc", "--from", "deg", "--to", "rad"), ("1", "--from", "deg")]:
            status, _, err = run("convert", *args)
            self.assertEqual(status, 2, args)
            self.assertTrue(err.strip(), args)


class BadInput(Temporary):
    """Every kind of bad file gets one line naming where, exit status 1, and no crash."""

    def check(self, text, fragment):
        path = self.write("bad.csv", text)
        status, out, err = run("traverse", path)
        self.assertEqual(status, 1, err)
        self.assertEqual(len(err.strip().splitlines()), 1, err)
        self.assertIn(fragment, err)
        return err

    def test_messages(self):
        self.check("", "bad.csv")
        self.check("name,easting,northing\n", "no records")
        self.check("name,easting\nA,1\n", "missing column 'northing'")
        err = self.check("name,easting,northing\nA,1,2\nB,3,abc\n", "bad.csv:3: northing 'abc' is not a number")
        self.assertTrue(err.startswith("korvel: "))
        self.check("name,easting,northing\nA,1,2\nB,nan,4\n", "not a finite number")
        self.check("name,easting,northing\nA,1,2\nB,inf,4\n", "not a finite number")
        self.check("name,easting,northing\nA,1,2\n", "at least two stations")

    def test_missing_file_and_standard_input(self):
        status, _, err = run("traverse", os.path.join(self.folder, "none.csv"))
        self.assertEqual(status, 1)
        self.assertIn("cannot open", err)
        status, out, err = run("traverse", "-", stdin="name,easting,northing\nA,0,0\nB,3,4\n")
        self.assertEqual(status, 0, err)
        self.assertIn("5.000", out)


def main():
    global KORVEL, DATA
    KORVEL, DATA = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    unittest.main(argv=[sys.argv[0]] + sys.argv[3:], verbosity=1)


if __name__ == "__main__":
    main()
