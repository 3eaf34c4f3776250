"""Derives the truth that the solver of places is held against, in decimal arithmetic of 50 digits.

    derive_solver_truth.py > solver_truth.txt

Nothing here follows the solver's own way. The orbit is a circle about the centre of the Earth in closed form,
seen from the turning Earth; its state vectors are rounded to doubles and nothing else. Geodetic coordinates are
found by bisection on the normal of the ellipsoid, the moment abeam by bisection on the angle between velocity
and sight, and a place on the ground by bisection along the circle of points that are abeam at that range.
"""
from decimal import Decimal, getcontext

getcontext().prec = 50
D = Decimal


def arctangent_of_inverse(n):
    total, power, k = D(0), D(1) / n, 0
    while abs(power) > D("1e-55"):
        total += power / (2 * k + 1) * (-1) ** k
        power /= n * n
        k += 1
    return total


PI = 4 * (4 * arctangent_of_inverse(5) - arctangent_of_inverse(239))  # Machin's formula
DEGREE = PI / 180


def sine_and_cosine(angle):
    angle = angle % (2 * PI)
    sine, cosine, term, k = D(0), D(0), D(1), 0
    while abs(term) > D("1e-52") or k < 8:
        if k % 2 == 0:
            cosine += term if k % 4 == 0 else -term
        else:
            sine += term if k % 4 == 1 else -term
        k += 1
        term = term * angle / k
    return sine, cosine


def bisected(function, low, high):
    """Where a function that is negative at `low` and positive at `high` is 0."""
    assert function(low) < 0 < function(high)
    for _ in range(150):
        middle = (low + high) / 2
        if function(middle) < 0:
            low = middle
        else:
            high = middle
    return low


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def minus(a, b):
    return [x - y for x, y in zip(a, b)]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def scaled(factor, a):
    return [factor * x for x in a]


def length(a):
    return dot(a, a).sqrt()


# The World Geodetic System 1984: the semi-axes that the solver is given, as doubles.
SEMIMAJOR, SEMIMINOR = D(6378137.0), D(6356752.314245)
FLATNESS = SEMIMINOR ** 2 / SEMIMAJOR ** 2


def earth_fixed(latitude, longitude, height):
    """Degrees and metres to metres, straight from the definition of geodetic coordinates."""
    sine, cosine = sine_and_cosine(latitude * DEGREE)
    across, along = sine_and_cosine(longitude * DEGREE)
    normal = SEMIMAJOR / (cosine ** 2 + FLATNESS * sine ** 2).sqrt()
    return [(normal + height) * cosine * along, (normal + height) * cosine * across,
            (FLATNESS * normal + height) * sine]


def geodetic(position):
    """The inverse. The foot of the normal at a latitude lies right below when the way from there runs along the
    normal; on which side of it the position lies tells whether the latitude is too low."""
    from_axis = (position[0] ** 2 + position[1] ** 2).sqrt()

    def foot_and_normal(latitude):
        sine, cosine = sine_and_cosine(latitude)
        normal = SEMIMAJOR / (cosine ** 2 + FLATNESS * sine ** 2).sqrt()
        return (normal * cosine, FLATNESS * normal * sine), (cosine, sine)

    def too_high(latitude):
        (x, z), (cosine, sine) = foot_and_normal(latitude)
        return (from_axis - x) * sine - (position[2] - z) * cosine

    latitude = bisected(too_high, -PI / 2 - D("1e-9"), PI / 2 + D("1e-9"))
    (x, z), (cosine, sine) = foot_and_normal(latitude)
    height = (from_axis - x) * cosine + (position[2] - z) * sine

    def too_far_east(longitude):
        east, along = sine_and_cosine(longitude)
        return position[0] * east - position[1] * along

    # The axis that the longitude lies nearest to, an eighth of a turn away at most.
    about = D(0) if position[0] > 0 else PI if position[1] >= 0 else -PI
    if abs(position[1]) > abs(position[0]):
        about = PI / 2 if position[1] > 0 else -PI / 2
    longitude = bisected(too_far_east, about - 1, about + 1)
    return latitude / DEGREE, longitude / DEGREE, height


# A circular orbit: its radius in metres, the angle of its plane to the equator and of the node from x, degrees,
# at time 0; the speeds along it and of the Earth, radians per second.
RADIUS, INCLINATION, NODE = D(6884000), D("97.44"), D("30")
ORBIT_RATE, EARTH_RATE = D("0.001105"), D("0.00007292115")


def motion(time):
    """Position, velocity and acceleration in the frame that turns with the Earth."""
    s, c = sine_and_cosine(ORBIT_RATE * time)
    si, ci = sine_and_cosine(INCLINATION * DEGREE)
    # In the plane, from the node; then in space.
    position = [RADIUS * c, RADIUS * s * ci, RADIUS * s * si]
    velocity = [-RADIUS * ORBIT_RATE * s, RADIUS * ORBIT_RATE * c * ci, RADIUS * ORBIT_RATE * c * si]
    acceleration = scaled(-ORBIT_RATE ** 2, position)
    # In the turning frame the rates get their share of the turn: v' = v - w x r, a' = a - 2 w x v + w x (w x r).
    turn = [D(0), D(0), EARTH_RATE]
    turning = minus(velocity, cross(turn, position))
    pulled = minus(acceleration, scaled(2, cross(turn, velocity)))
    pulled = [a + b for a, b in zip(pulled, cross(turn, cross(turn, position)))]
    sn, cn = sine_and_cosine(NODE * DEGREE - EARTH_RATE * time)

    def turned(v):
        return [v[0] * cn - v[1] * sn, v[0] * sn + v[1] * cn, v[2]]

    return turned(position), turned(turning), turned(pulled)


def abeam(place):
    """When a place is abeam, between the first and the last vector and one interval beyond, and how far away."""
    target = earth_fixed(*place)

    def passed(time):
        position, velocity, _ = motion(time)
        return -dot(velocity, minus(target, position))

    time = bisected(passed, FIRST - INTERVAL, FIRST + (COUNT - 1) * INTERVAL + INTERVAL)
    return time, length(minus(target, motion(time)[0]))


def seen(time, distance, side, height):
    """The place at a height that is abeam at that time and distance, to that side."""
    position, velocity, _ = motion(time)
    down = scaled(-1 / length(position), position)
    # Abeam: at right angles to the velocity, from as far down as can be to the side.
    v = scaled(1 / length(velocity), velocity)
    down = minus(down, scaled(dot(down, v), v))
    down = scaled(1 / length(down), down)
    sideways = scaled(1 if side == "right" else -1, cross(v, scaled(-1, down)))

    def at(angle):
        sine, cosine = sine_and_cosine(angle)
        return [p + distance * (cosine * d + sine * s) for p, d, s in zip(position, down, sideways)]

    angle = bisected(lambda a: geodetic(at(a))[2] - height, D(0), D("1.2"))
    return geodetic(at(angle))


FIRST, INTERVAL, COUNT = D(900), D(10), 12


def digits(value):
    """To 15 places: more than a double holds of any number here."""
    text = f"{value:.15f}"
    return text.lstrip("-") if not text.strip("-0.") else text


def line(word, values):
    print(f"{word:9}", *values)


def block(operation, given, expected, tolerance, why=None):
    if why:
        print(f"# {why}")
    line("operation", [operation])
    line("given", given)
    line("expect", map(digits, expected))
    line("within", [tolerance])
    print()


def exact(*texts):
    """What a program makes of such numbers: the nearest doubles."""
    return [D(float(text)) for text in texts]


print("""# What the solver of places must give. Made by derive_solver_truth.py, which says how; a test runs it and
# compares. Distances are metres, times seconds, angles degrees, Earth-fixed coordinates x y z.
#
#   operation to_earth_fixed   given latitude longitude height     expect x y z
#   operation to_geodetic      given x y z                         expect latitude longitude height
#   operation orbit            given time                          expect x y z, velocity, acceleration
#   operation to_radar         given latitude longitude height     expect time, slant range
#   operation to_ground        given time range side height        expect latitude longitude height
#
# The tolerance is a length: of the distance between two places, of each coordinate of a position, of a velocity
# or an acceleration times one second, of a range, and of a time on the way of 7.6 km that a satellite flies in
# each second.
""")

for place in (("0", "0", "0"), ("0", "180", "0"), ("48.08", "11.28", "600"), ("-49.9", "-73.2", "8848"),
              ("90", "0", "0"), ("-90", "0", "-430"), ("89.9999", "-135", "100"), ("1e-9", "-179.999999999", "1"),
              ("-33.5", "-70.25", "514000")):
    block("to_earth_fixed", place, earth_fixed(*exact(*place)), "2 nm")
for place in (("0", "0", "0"), ("48.08", "11.28", "600"), ("-49.9", "-73.2", "8848"), ("89.9999", "-135", "100"),
              ("1e-9", "-179.999999999", "1"), ("-33.5", "-70.25", "514000"), ("45", "90", "-500"),
              ("-80", "-1e-7", "9000")):
    position = [repr(float(x)) for x in earth_fixed(*exact(*place))]
    block("to_geodetic", position, geodetic(exact(*position)), "5 nm")

print("# The orbit: time of the first vector and interval, then position and velocity, vector by vector.")
line("vectors", [FIRST, INTERVAL, COUNT])
for i in range(COUNT):
    position, velocity, _ = motion(FIRST + INTERVAL * i)
    line("vector", [repr(float(x)) for x in position + velocity])
print()

for time, why in (("900", "at the first vector"), ("903.7", "in the first interval"), ("955", "in the middle"),
                  ("961.23456789", "in the middle"), ("1010", "at the last vector")):
    block("orbit", [time], sum(map(list, motion(exact(time)[0])), []), "20 nm", why)
for time, why in (("895", "half an interval before the first vector"),
                  ("1015", "half an interval after the last")):
    block("orbit", [time], sum(map(list, motion(exact(time)[0])), []), "1 um", why)

# Places that the orbit passes, from where it is at some time: a range and a height to the right or the left.
for time, distance, side, height in (("955.5", "620000", "right", "600"), ("955.5", "620000", "left", "600"),
                                     ("900.25", "560000", "right", "-500"), ("1009.5", "830000", "left", "9000"),
                                     ("941.125", "705000", "right", "0"), ("897", "650000", "right", "250"),
                                     ("1013", "650000", "left", "250")):
    numbers = exact(time, distance)
    place = seen(*numbers, side, exact(height)[0])
    block("to_ground", [time, distance, side, height], place, "50 nm")
    rounded = [repr(float(x)) for x in place[:2]] + [height]
    block("to_radar", rounded, abeam(exact(*rounded)), "100 nm")
