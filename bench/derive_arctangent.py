#!/usr/bin/env python3
"""Derives the polynomials of platform/conversion/pixel_kernels.inc and prints them with their errors.

Found is the odd polynomial P of TERMS terms that comes closest to S atan(u) on [0, 1]: Remez' exchange
in 50 decimal digits. S is the steps of the 16-bit phase in a radian, 10430.3783505, for coefficients
that must be 32-bit floats, and 1 for 64-bit ones. They are rounded from the first on, and after each
rounding the others are fitted anew; the rounding of the large first ones is made good by the small later
ones.

    bench/derive_arctangent.py [TERMS [32|64]]
"""

import struct
import sys
from decimal import Decimal as D, getcontext

getcontext().prec = 50
SCALE = {32: D("10430.3783505"), 64: D(1)}
UNIT = {32: "steps", 64: "rad"}
GRID = 4000


def atan(x):
    """The arctangent of 0 <= x <= 1, by halving the angle three times and the power series."""
    halvings = 3
    for _ in range(halvings):
        x = x / (1 + (1 + x * x).sqrt())
    term, total, n = x, D(0), 0
    while abs(term) > D("1e-48"):
        total += term / (2 * n + 1)
        term *= -x * x
        n += 1
    return total * 2**halvings


def solve(rows):
    """Solves the linear equations [a1 ... an | b] by elimination with pivots."""
    n = len(rows)
    for c in range(n):
        pivot = max(range(c, n), key=lambda r: abs(rows[r][c]))
        rows[c], rows[pivot] = rows[pivot], rows[c]
        for r in range(n):
            if r != c:
                factor = rows[r][c] / rows[c][c]
                rows[r] = [x - factor * y for x, y in zip(rows[r], rows[c])]
    return [rows[r][n] / rows[r][r] for r in range(n)]


def odd(coefficients, x):
    total = D(0)
    for c in reversed(coefficients):
        total = total * x * x + c
    return total * x


def fit(known, terms, points, wanted):
    """Fits the coefficients behind the known ones; gives all of them."""
    free = terms - len(known)
    # Chebyshev's points crowd at both ends; any start with free + 1 points would do.
    picks = [1 + round((GRID - 1) * (k / free) ** D("0.7")) for k in map(D, range(free + 1))]
    for _ in range(60):
        rows = []
        for n, p in enumerate(picks):
            x = points[p]
            powers = [x ** (2 * k + 1) for k in range(len(known), terms)]
            rows.append(powers + [D((-1) ** n), wanted[p] - odd(known, x)])
        found = known + solve(rows)[:free]
        errors = [odd(found, x) - w for x, w in zip(points, wanted)]
        # One extreme for each run of errors of one sign.
        extremes = []
        for p in range(1, GRID + 1):
            if extremes and (errors[p] > 0) == (errors[extremes[-1]] > 0):
                if abs(errors[p]) > abs(errors[extremes[-1]]):
                    extremes[-1] = p
            else:
                extremes.append(p)
        while len(extremes) > free + 1:
            extremes.pop(0 if abs(errors[extremes[0]]) < abs(errors[extremes[-1]]) else -1)
        if len(extremes) < free + 1 or extremes == picks:
            break
        picks = extremes
    return found


def rounded(x, bits):
    """To the closest float of so many bits; a Python float has 64."""
    return D(float(x) if bits == 64 else struct.unpack("f", struct.pack("f", float(x)))[0])


def main():
    terms = int(sys.argv[1]) if len(sys.argv) > 1 else 9
    bits = int(sys.argv[2]) if len(sys.argv) > 2 else 32
    points = [D(k) / GRID for k in range(GRID + 1)]
    wanted = [SCALE[bits] * atan(x) for x in points]

    def worst(coefficients):
        return max(abs(odd(coefficients, x) - w) for x, w in zip(points, wanted))

    ideal = fit([], terms, points, wanted)
    print(f"{terms} terms, coefficients of any precision: error {worst(ideal):.3e} {UNIT[bits]}")
    known = []
    for _ in range(terms):
        known.append(rounded(fit(known, terms, points, wanted)[len(known)], bits))
    print(f"coefficients that are {bits}-bit floats: error {worst(known):.3e} {UNIT[bits]}")
    for k, c in enumerate(known):
        print(f"  u^{2 * k + 1:<2}  {float(c):.{9 if bits == 32 else 17}g}  {float(c).hex()}")


if __name__ == "__main__":
    main()
