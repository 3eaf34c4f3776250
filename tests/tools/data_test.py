"""The published records of simulated products, field by field against a derivation of its own from the
annotation's text: rational arithmetic where the plug-in uses doubles, and no shared code.

    data_test.py BUILD FOLDER
"""
import datetime
import json
import struct
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from fractions import Fraction

from programs import GRIDKIT, complaint, run, simulate, text

LIGHT = 299792458
RADAR = ":RADAR_Generic_v2.2"


def data(annotation, name=RADAR):
    return json.loads(text(GRIDKIT, "data", "--json", annotation, name))


def single(text):
    return struct.unpack("f", struct.pack("f", float(text)))[0]


class Time:
    def __init__(self, text):
        self.date = datetime.date.fromisoformat(text[:10])
        self.hour, self.minute = int(text[11:13]), int(text[14:16])
        self.second = single(text[17:].rstrip("Z"))

    def day_of_year(self):
        return (self.date - datetime.date(self.date.year, 1, 1)).days + 1

    def second_of_day(self):
        return 3600 * self.hour + 60 * self.minute + self.second


def fit(coefficients, spacing, near, terms):
    """Slant range by powers of ground range: the exact solution of the normal equations."""
    times = [Fraction(k * 1000) * Fraction(spacing) / LIGHT * 2 for k in range(10)]
    ground = [sum(Fraction(a) * t**i for i, a in enumerate(coefficients)) for t in times]
    slant = [t * LIGHT / 2 for t in times]
    rows = [[sum(g**(i + j) for g in ground) for j in range(terms)] +
            [sum(g**i * s for g, s in zip(ground, slant))] for i in range(terms)]
    for i in range(terms):
        rows[i] = [x / rows[i][i] for x in rows[i]]
        for j in range(terms):
            if j != i:
                rows[j] = [x - rows[j][i] * y for x, y in zip(rows[j], rows[i])]
    return [near] + [float(row[-1]) for row in rows[1:]], float(ground[-1]), float(slant[-1])


def expected(root, variant):
    def content(path):
        found = root.find(path)
        return None if found is None else found.text

    def number(path):
        return float(content(path))

    raster, complex_image = "productInfo/imageDataInfo/imageRaster/", "productSpecific/complexImageInfo/"
    is_complex = variant == "SSC"
    start = Time(content("productInfo/sceneInfo/start/timeUTC"))
    stop = Time(content("productInfo/sceneInfo/stop/timeUTC"))
    state = Time(content("platform/orbit/orbitHeader/firstStateTime/firstStateTimeUTC"))
    # The three forms of the first state's time, told apart by the day's number in the year alone.
    first = state.second_of_day()
    if state.day_of_year() < start.day_of_year():
        first = ((24 - state.hour) * 60 - state.minute) * 60 + state.second
    if state.day_of_year() > start.day_of_year():
        first += 86400
    lines, samples = int(content(raster + "numberOfRows")), int(content(raster + "numberOfColumns"))
    quicklook = content(complex_image + "quicklookDataStartWith")
    near = float(Fraction(content("productInfo/sceneInfo/rangeTime/firstPixel")) * LIGHT / 2)
    model = {
        "sensor": "RMDL_GENERIC_SAR",
        "data_type": "RMDL_MAG_PHASE" if is_complex else "RMDL_MAG",
        "coord_sys": "F",
        "year": start.date.year, "month": start.date.month, "day": start.date.day,
        "doy": start.day_of_year(),
        "num_samples": samples, "num_lines": lines,
        "image_start_time": start.second_of_day(),
        "first_pt_secs_of_day": first, "first_pt_org": first,
        "time_interval": number("platform/orbit/orbitHeader/stateVectorTimeSpacing"),
        "time_interval_org": number("platform/orbit/orbitHeader/stateVectorTimeSpacing"),
        "image_duration": (stop.second_of_day() - start.second_of_day() +
                           (86400 if stop.hour < start.hour else 0)),
        "image_end_time": stop.second_of_day(),
        "semimajor": 6378137.0, "semiminor": 6356752.314,
        "target_height": number("productInfo/sceneInfo/sceneAverageHeight"),
        "look_side": -90.0 if content("productInfo/acquisitionInfo/lookDirection") == "LEFT" else 90.0,
        "wavelength": LIGHT / number("instrument/radarParameters/centerFrequency"),
        "sampling_rate": number("instrument/settings/RSF"),
        "range_pix_spacing": single(content(
            complex_image + "projectedSpacingRange/slantRange" if is_complex
            else raster + "columnSpacing")),
        "azimuth_line_spacing": single(content(
            complex_image + "projectedSpacingAzimuth" if is_complex else raster + "rowSpacing")),
        "near_slant_range": near,
        "num_pos_pts": int(content("platform/orbit/orbitHeader/numStateVectors")),
        "projection": 2 if content("productInfo/productVariantInfo/projection") == "SLANTRANGE" else 1,
        "time_dir_pixels": ("RMDL_DECREASE" if not is_complex and quicklook.endswith("FARRG")
                            else "RMDL_INCREASE"),
        "time_dir_lines": ("RMDL_DECREASE" if not is_complex and quicklook.startswith("LATEAZ")
                           else "RMDL_INCREASE"),
        "orbitState": "RMDL_ORIGINAL",
        "sub_unity_subset": 1,
        "sub_range_start": 0, "sub_range_end": samples - 1, "sub_range_degrade": 1,
        "sub_range_num_samples": samples,
        "sub_azimuth_start": 0, "sub_azimuth_end": lines - 1, "sub_azimuth_degrade": 1,
        "sub_azimuth_num_lines": lines,
    }
    for axis in "xyz":
        for name, tag in (("rs", "pos"), ("vs", "vel")):
            model[name + axis] = [float(e.text) for e in
                                  root.iterfind(f"platform/orbit/stateVec/{tag}{axis.upper()}")]
    return model


def hermite(model, time):
    """Position at a time of the model, from the two state vectors around it."""
    step = model["time_interval"]
    place = (time - model["first"]) / step
    i = min(max(int(place), 0), model["num_pos_pts"] - 2)
    u = place - i
    weights = (2 * u**3 - 3 * u**2 + 1, -2 * u**3 + 3 * u**2, u**3 - 2 * u**2 + u, u**3 - u**2)
    return [weights[0] * model["rs" + a][i] + weights[1] * model["rs" + a][i + 1] +
            step * (weights[2] * model["vs" + a][i] + weights[3] * model["vs" + a][i + 1])
            for a in "xyz"]


class Records(unittest.TestCase):
    def assertClose(self, value, wanted, name):
        if isinstance(wanted, list):
            self.assertEqual(len(value), len(wanted), name)
            for i, (v, w) in enumerate(zip(value, wanted)):
                self.assertClose(v, w, f"{name}[{i}]")
        elif isinstance(wanted, float):
            self.assertLessEqual(abs(value - wanted), 1e-12 * abs(wanted), (name, value, wanted))
        else:
            self.assertEqual(value, wanted, name)

    def check_model(self, variant, *options):
        annotation = simulate("product", "--variant", variant, "--empty-images", *options)
        root = ElementTree.parse(annotation).getroot()
        published = data(annotation)
        self.assertEqual(published["type"], "RADAR_Generic_v2.2")
        value = published["value"]
        wanted = expected(root, variant)
        for name, field in wanted.items():
            self.assertClose(value[name], field, name)
        self.assertEqual(set(value) - set(wanted), {"gnd2slt_coeffs", "rs_coeffs", "vs_coeffs"})
        # A vector of n doubles takes 4 + 8 n bytes; the rest is fixed: 5 enumerations, 1 character,
        # 17 integers, 16 doubles and 24 more in arrays.
        self.assertEqual(published["size"],
                         4 * 5 + 1 + 4 * 17 + 8 * 16 + 8 * 24 + 6 * (4 + 8 * value["num_pos_pts"]))
        self.check_polynomial(root, variant, value)
        self.check_orbit(root, value)

    def check_polynomial(self, root, variant, value):
        if variant == "SSC":
            self.assertEqual(value["gnd2slt_coeffs"], [0.0] * 6)
            return
        coefficients = [Fraction(e.text) for e in root.iterfind(
            "productSpecific/projectedImageInfo/slantToGroundRangeProjection/coefficient")]
        spacing = single(root.find(
            "productSpecific/complexImageInfo/projectedSpacingRange/slantRange").text)
        wanted, far_ground, far_slant = fit([float(c) for c in coefficients], spacing,
                                            value["near_slant_range"], len(coefficients))
        self.assertEqual(value["gnd2slt_coeffs"][0], value["near_slant_range"])
        for i, (v, w) in enumerate(zip(value["gnd2slt_coeffs"], wanted)):
            self.assertLessEqual(abs(v - w) * far_ground**i, 1e-9 * far_slant, i)

    def check_orbit(self, root, value):
        start = Time(root.find("productInfo/sceneInfo/start/timeUTC").text)
        state = Time(root.find("platform/orbit/orbitHeader/firstStateTime/firstStateTimeUTC").text)
        first = state.second_of_day() + 86400 * (state.date - start.date).days
        for share in (0, 0.25, 0.5, 0.75, 1):
            t = (share - 0.5) * value["image_duration"]
            true = hermite({**value, "first": first},
                           value["image_start_time"] + share * value["image_duration"])
            for axis in range(3):
                a, b, c = value["rs_coeffs"][3 * axis:3 * axis + 3]
                self.assertLess(abs(a + b * t + c * t * t - true[axis]), 0.5, (share, axis))

    def test_every_schema(self):
        for version in ("3.4", "3.5", "3.7", "4.0"):
            for variant in ("SSC", "MGD"):
                with self.subTest(version=version, variant=variant):
                    self.check_model(variant, "--version-text", version)

    def test_either_side_and_turned_rasters(self):
        self.check_model("MGD", "--look", "left", "--start-with", "LATEAZFARRG")
        self.check_model("MGD", "--start-with", "EARLYAZFARRG")
        self.check_model("SSC", "--look", "left", "--pass", "ascending")

    def test_around_midnight_and_the_turn_of_the_year(self):
        for start in ("2008-03-10T23:59:59.990000", "2008-03-11T00:00:20", "2008-12-31T23:59:59.99",
                      "2009-01-01T00:00:20"):
            with self.subTest(start=start):
                self.check_model("SSC", "--start", start)

    def test_calibration_of_every_variant(self):
        for variant in ("SSC", "MGD", "GEC", "EEC"):
            with self.subTest(variant=variant):
                annotation = simulate("product", "--variant", variant, "--empty-images")
                factor = float(ElementTree.parse(annotation).getroot().find(
                    "calibration/calibrationConstant/calFactor").text)
                published = data(annotation, ":TSX_Beta0")
                self.assertEqual(published["value"], {"calibration_factor": factor})
                self.assertEqual((published["name"], published["type"], published["size"]),
                                 (":TSX_Beta0", "TSX_Beta0", 8))
                self.assertIn("calibration_factor", published["dictionary"])
                listed = json.loads(text(GRIDKIT, "info", "--json", annotation))["data"]
                self.assertEqual(listed, [":TSX_Beta0"] if variant in ("GEC", "EEC")
                                 else [RADAR, ":TSX_Beta0"])

    def test_names_are_those_that_info_lists(self):
        annotation = simulate("product", "--variant", "GEC", "--empty-images")
        self.assertEqual(f'gridkit: {annotation}: no data of the name "TSX_Beta0"; did you mean ":TSX_Beta0"?\n'
                         "  the data are :TSX_Beta0\n", complaint(GRIDKIT, "data", annotation, "TSX_Beta0"))
        # The plug-in itself would answer: in any case, and with a sensor model of zeros for an image on a map.
        for name in (RADAR, ":tsx_beta0", ":TSX_Beta0 and more"):
            self.assertIn(f'{annotation}: no data of the name "{name}"', complaint(GRIDKIT, "data", annotation, name))
        run(GRIDKIT, "data", annotation, status=2)

    def test_text_shows_every_field(self):
        annotation = simulate("product", "--empty-images")
        lines = text(GRIDKIT, "data", annotation, RADAR).splitlines()
        self.assertEqual(49, len(lines))
        self.assertIn('  data_type = "RMDL_MAG_PHASE"', lines)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
