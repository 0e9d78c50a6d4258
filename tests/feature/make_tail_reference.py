#!/usr/bin/env python3
"""Makes tail_reference.csv: the logarithms of upper tails of chi-square, F, |t| and the normal.

Every tail is computed with mpmath at the very double of the statistic, by series of positive terms
alone (for the incomplete gamma and the incomplete beta integral), or 1 minus such a series with as
many more digits as the difference loses; at least 50 digits are right and 20 are given. Needs mpmath
(and is quick with gmpy2: minutes); not needed to run the tests.
"""

import csv
import sys

import mpmath as mp

DIGITS = 60
DEGREES = [1e-3, 0.1, 0.5, 1.0, 2.0, 3.7, 15.0, 100.0, 1e4, 1e6, 1e9]
PAIRS = [
    (1e-3, 1e-3),
    (1e-3, 1.0),
    (1e-3, 1e9),
    (1.0, 1e-3),
    (1e9, 1e-3),
    (0.1, 5.0),
    (0.5, 0.7),
    (1.0, 3.0),
    (1.0, 1e4),
    (2.0, 5.5),
    (7.0, 2.0),
    (3.0, 1e4),
    (1e4, 3.0),
    (19.0, 21.0),
    (40.0, 60.0),
    (25.0, 5e3),
    (1e3, 1e4),
    (5.0, 1e6),
    (1e6, 5.0),
    (1e5, 1e6),
    (4.0, 1e9),
    (1e9, 4.0),
    (1e9, 1e9),
]
DEVIATIONS = [-30, -7, -1, 0, 1, 7, 20, 36]
ANYWHERE = [1e-300, 1e-9, 0.01, 0.6, 3.0, 30.0, 700.0, 1e5, 1e12, 1e300]


def total(ratio):
    """1 + r(1) + r(1) r(2) + ... for ratios that end below 1."""
    small = mp.mpf(10) ** -(mp.mp.dps + 5)
    term = result = mp.mpf(1)
    n = 0
    while True:
        n += 1
        r = ratio(n)
        term *= r
        result += term
        if term < small * result * (1 - r):
            return result


def gamma_lower(y, a):
    return mp.exp(a * mp.log(y) - y - mp.loggamma(a + 1)) * total(lambda n: y / (a + n))


def gamma_upper_far(y, a):
    """ln Q(a, y) for y far beyond a, where 1 - P has no digits: integration by parts, whose terms
    fall until they are far below the last digit."""
    term = result = mp.mpf(1)
    n = 0
    while abs(term) > mp.mpf(10) ** -DIGITS:
        n += 1
        assert abs(a - n) < y
        term *= (a - n) / y
        result += term
    return (a - 1) * mp.log(y) - y - mp.loggamma(a) + mp.log(result)


def beta_small(x, y, a, b):
    """I(x; a, b); quick for x up to a half or a mean beyond x."""
    front = a * mp.log(x) + b * mp.log(y) + mp.loggamma(a + b) - mp.loggamma(a + 1) - mp.loggamma(b)
    return mp.exp(front) * total(lambda n: x * (a + b + n - 1) / (a + n))


def with_digits(tail, other_side):
    """ln of a tail, or of 1 - tail, with the digits that it takes."""
    for digits in (DIGITS, 420, 6000):
        mp.mp.dps = digits
        value = tail()
        if other_side and value >= 1:
            continue
        result = mp.log1p(-value) if other_side else mp.log(value)
        # What is left of 1 - tail, and of a logarithm near 0.
        if min(1 - value if other_side else 1, -result) > mp.mpf(10) ** -(digits - 50):
            return result
        if value < mp.mpf(10) ** -320:
            return None
    return None


def chi(x, df):
    if x > 8000 and x > 40 * df:
        mp.mp.dps = 2 * DIGITS
        return gamma_upper_far(mp.mpf(x) / 2, mp.mpf(df) / 2)
    return with_digits(lambda: gamma_lower(mp.mpf(x) / 2, mp.mpf(df) / 2), True)


def beta_upper(odds, a, b):
    """ln P(X > x) with odds() = x / (1 - x)."""
    if odds() >= 1:
        return with_digits(
            lambda: beta_small(1 / (1 + odds()), odds() / (1 + odds()), mp.mpf(b), mp.mpf(a)), False
        )
    return with_digits(
        lambda: beta_small(odds() / (1 + odds()), 1 / (1 + odds()), mp.mpf(a), mp.mpf(b)), True
    )


def f(x, df1, df2):
    return beta_upper(lambda: mp.mpf(x) * df1 / df2, df1 / 2, df2 / 2)


def t(x, df):
    return beta_upper(lambda: mp.mpf(x) ** 2 / df, 0.5, df / 2)


def norm(x):
    mp.mp.dps = 2 * DIGITS
    beyond = mp.erfc(abs(mp.mpf(x)) / mp.sqrt(2)) / 2
    return mp.log(beyond) if x > 0 else mp.log1p(-beyond)


def statistics(mean, deviation):
    near = [mean + z * deviation for z in DEVIATIONS]
    return sorted({float(f"{x:.5e}") for x in near + ANYWHERE if x > 0})


def rows():
    for df in DEGREES:
        for x in statistics(df, (2 * df) ** 0.5):
            yield "chi", chi, x, (df,)
        for x in ANYWHERE + [37.0]:
            yield "t", t, x, (df,)
    for df1, df2 in PAIRS:
        for x in statistics(1, (2 / df1 + 2 / df2) ** 0.5):
            yield "f", f, x, (df1, df2)
    for z in [-40.0, -8.0, -1.0, -1e-9, 1e-9, 0.5, 2.0, 8.0, 37.0, 1e3, 1e9]:
        yield "norm", norm, z, ()


def main():
    out = csv.writer(sys.stdout, lineterminator="\n")
    out.writerow(["function", "x", "df1", "df2", "log_tail"])
    for name, function, x, df in rows():
        log_tail = function(x, *df)
        if log_tail is None or not log_tail < -1e-300:
            continue
        out.writerow([name, repr(x), *(list(df) + [0, 0])[:2], mp.nstr(log_tail, 20)])
        sys.stdout.flush()


if __name__ == "__main__":
    main()
