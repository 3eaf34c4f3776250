"""Backscatter of an image, derived from the text of its product's annotation and geolocation grid alone: numpy
formulas of their own, which share nothing with the system but what the files say."""
from datetime import datetime
from xml.etree import ElementTree

import numpy

SPEED_OF_LIGHT = 299792458.0
SEMIMAJOR, SEMIMINOR = 6378137.0, 6356752.314245


def seconds(utc, day):
    """Since midnight of the day of another time."""
    parse = lambda text: datetime.fromisoformat(text.rstrip("Z"))
    midnight = parse(day).replace(hour=0, minute=0, second=0, microsecond=0)
    return (parse(utc) - midnight).total_seconds()


class Annotation:
    def __init__(self, path):
        self.path = path
        self.root = ElementTree.parse(path).getroot()
        self.scene = self.root.find("productInfo/sceneInfo")
        self.start = self.scene.find("start/timeUTC").text
        raster = self.root.find("productInfo/imageDataInfo/imageRaster")
        self.shape = (int(raster.find("numberOfRows").text), int(raster.find("numberOfColumns").text))
        self.is_complex = self.root.find("productInfo/productVariantInfo/productVariant").text == "SSC"

    def number(self, path, within=None):
        return float((self.root if within is None else within).find(path).text)

    def factor(self, polarisation):
        constants = self.root.findall("calibration/calibrationConstant")
        return next(self.number("calFactor", c) for c in constants if c.find("polLayer").text == polarisation)

    def turned(self):
        """Whether lines, and samples, run backwards."""
        if self.is_complex:
            return False, False
        begin = self.root.find("productSpecific//quicklookDataStartWith")
        begin = self.root.find(".//quicklookDataStartWith") if begin is None else begin
        return begin.text.startswith("LATEAZ"), begin.text.endswith("FARRG")

    def line_times(self):
        """Of every line, seconds since the midnight before the scene."""
        first = seconds(self.start, self.start)
        last = seconds(self.scene.find("stop/timeUTC").text, self.start)
        times = numpy.linspace(first, last, self.shape[0])
        return times[::-1] if self.turned()[0] else times

    def range_times(self):
        """Of every sample, two-way."""
        near = self.number("rangeTime/firstPixel", self.scene)
        samples = numpy.arange(self.shape[1])
        if self.is_complex:
            return near + samples * (self.number("rangeTime/lastPixel", self.scene) - near) / samples[-1]
        projection = self.root.find("productSpecific/projectedImageInfo/slantToGroundRangeProjection")
        reference = self.number("referencePoint", projection)
        terms = [float(c.text) for c in projection.findall("coefficient")]
        along = numpy.polynomial.Polynomial(terms)
        spacing = self.number("productInfo/imageDataInfo/imageRaster/rowSpacing")
        if self.turned()[1]:
            samples = samples[::-1]
        wanted = along(near - reference) + samples * spacing
        times = near + samples * spacing * 2 / SPEED_OF_LIGHT / 2
        for _ in range(50):
            times = times - (along(times - reference) - wanted) / along.deriv()(times - reference)
        return times

    def noise(self, polarisation):
        """The noise of every pixel on the scale of digital numbers squared."""
        [table] = [n for n in self.root.findall("noise") if n.find("polLayer").text == polarisation]
        records = table.findall("imageNoise")
        at = numpy.array([seconds(r.find("timeUTC").text, self.start) for r in records])
        ranges = self.range_times()
        rows = []
        for record in records:
            [estimate] = record.findall("noiseEstimate")
            terms = {int(c.get("exponent")): float(c.text) for c in estimate.findall("coefficient")}
            held = ranges.clip(self.number("validityRangeMin", estimate), self.number("validityRangeMax", estimate))
            offset = held - self.number("referencePoint", estimate)
            rows.append(sum(value * offset**exponent for exponent, value in terms.items()))
        rows = numpy.array(rows)
        return numpy.array([[numpy.interp(time, at, column) for column in rows.T] for time in self.line_times()])

    def orbit(self):
        """Positions and velocities at the lines: Lagrange's polynomial through the nearest eight states."""
        states = self.root.findall("platform/orbit/stateVec")
        at = numpy.array([seconds(s.find("timeUTC").text, self.start) for s in states])
        places = numpy.array([[float(s.find(f"pos{axis}").text) for axis in "XYZ"] for s in states])
        times = self.line_times()
        first = int(numpy.clip(numpy.searchsorted(at, times.mean()) - 4, 0, len(at) - 8))
        at, places = at[first:first + 8], places[first:first + 8]

        def positions(times):
            total = numpy.zeros((len(times), 3))
            for i in range(len(at)):
                others = numpy.delete(at, i)
                weight = numpy.prod((times[:, None] - others) / (at[i] - others), axis=1)
                total += weight[:, None] * places[i]
            return total

        step = 1e-2  # s; the orbit's third derivative makes an error of 1e-7 m/s
        return positions(times), (positions(times + step) - positions(times - step)) / (2 * step)

    def ellipsoid_incidence(self):
        """Radians, for every pixel: on the ellipsoid, raised by the scene's average height, where the range and the
        zero-Doppler plane meet it on the side that the radar looks to."""
        height = self.number("sceneAverageHeight", self.scene)
        left = self.root.find("productInfo/acquisitionInfo/lookDirection").text == "LEFT"
        position, velocity = (v[:, None, :] for v in self.orbit())
        ranges = self.range_times()[None, :] * SPEED_OF_LIGHT / 2
        # In the zero-Doppler plane a look is down by an angle; downwards is within the plane.
        along = unit(velocity)
        down = -position + numpy.sum(position * along, axis=-1, keepdims=True) * along
        down = unit(down)
        aside = numpy.cross(down, along) * (-1 if left else 1)  # to the right of the flight
        angle = numpy.full(ranges.shape, 0.5) + numpy.zeros((position.shape[0], 1))
        for _ in range(12):
            values = []
            for probe in (angle, angle + 1e-6):
                look = numpy.cos(probe)[..., None] * down + numpy.sin(probe)[..., None] * aside
                values.append(geodetic(position + ranges[..., None] * look)[0] - height)
            angle = angle - values[0] * 1e-6 / (values[1] - values[0])
        look = numpy.cos(angle)[..., None] * down + numpy.sin(angle)[..., None] * aside
        _, up = geodetic(position + ranges[..., None] * look)
        return numpy.arccos(-numpy.sum(look * up, axis=-1))

    def grid_incidence(self):
        """Radians, for every pixel: between the points of the geolocation grid, by its rows and columns."""
        root = ElementTree.parse(self.path.parent / "ANNOTATION/GEOREF.xml").getroot()
        points = root.findall("geolocationGrid/gridPoint")
        shape = [max(int(p.get(name)) for p in points) for name in ("iaz", "irg")]
        table = lambda name: numpy.array([float(p.find(name).text) for p in points]).reshape(shape)
        row, column, angle = table("row") - 1, table("col") - 1, table("inc")
        assert (row == row[:, :1]).all() and (column == column[:1]).all()
        lines, samples = row[:, 0], column[0]
        if lines[0] > lines[-1]:
            lines, angle = lines[::-1], angle[::-1]
        if samples[0] > samples[-1]:
            samples, angle = samples[::-1], angle[:, ::-1]
        at_samples = numpy.array([linear(numpy.arange(self.shape[1]), samples, one) for one in angle])
        at_pixels = numpy.array([linear(numpy.arange(self.shape[0]), lines, one) for one in at_samples.T]).T
        return numpy.radians(at_pixels)


def linear(at, axis, values):
    """Between the values at an axis' points; the outermost pair runs on."""
    i = numpy.clip(numpy.searchsorted(axis, at, side="right") - 1, 0, len(axis) - 2)
    share = (at - axis[i]) / (axis[i + 1] - axis[i])
    return values[i] * (1 - share) + values[i + 1] * share


def unit(vectors):
    return vectors / numpy.linalg.norm(vectors, axis=-1, keepdims=True)


def geodetic(places):
    """Height above the ellipsoid, and its outward normal: by iterating the latitude."""
    flat = (SEMIMINOR / SEMIMAJOR)**2
    x, y, z = places[..., 0], places[..., 1], places[..., 2]
    distance = numpy.hypot(x, y)
    latitude = numpy.arctan2(z, distance * flat)
    for _ in range(6):
        sine = numpy.sin(latitude)
        vertical = SEMIMAJOR / numpy.sqrt(1 - (1 - flat) * sine**2)
        latitude = numpy.arctan2(z + (1 - flat) * vertical * sine, distance)
    sine, cosine = numpy.sin(latitude), numpy.cos(latitude)
    vertical = SEMIMAJOR / numpy.sqrt(1 - (1 - flat) * sine**2)
    height = distance * cosine + z * sine - SEMIMAJOR**2 / vertical
    return height, numpy.stack([cosine * x / distance, cosine * y / distance, sine], axis=-1)


def backscatter(kind, power, factor, noise, angle):
    """Of powers (digital numbers squared): the quantity that --calibrate names."""
    value = factor * (power - noise)
    if kind.startswith("sigma0"):
        value = value * numpy.sin(angle)
    if kind.startswith("gamma0"):
        value = value * numpy.tan(angle)
    if not kind.endswith("-db"):
        return value
    with numpy.errstate(divide="ignore", invalid="ignore"):
        level = 10 * numpy.log10(value)
    return numpy.where(numpy.isinf(level), numpy.nan, level)
