#!/usr/bin/env python3
"""Makes distribution_reference.csv: lower-tail probabilities of chi-square, F and t.

Each statistic is placed with scipy so that its probability is about 1e-300, 1e-200, ... 1 - 1e-12, and
rounded to 6 digits; the probability at that very double is then computed with mpmath in 60 digits
(series of positive terms for the incomplete gamma integral, continued fraction for the incomplete
beta integral) and given in 20. Needs scipy and mpmath; not needed to run the tests.
"""

import csv
import sys

import mpmath as mp
from scipy import stats

mp.mp.dps = 60
PROBABILITIES = [1e-300, 1e-200, 1e-100, 1e-30, 1e-10, 1e-3, 0.1, 0.5, 0.9, 0.999, 1 - 1e-12]
DEGREES = [0.1, 0.5, 1.0, 2.0, 3.7, 15.0, 100.0, 1000.0, 1e4, 1e5, 1e6]
PAIRS = [(0.1, 0.1), (1.0, 3.0), (2.0, 5.5), (7.0, 2.0), (3.0, 1e4), (1e4, 3.0), (40.0, 60.0),
         (1e3, 1e4), (1e4, 1e4), (1.0, 1e6), (1e6, 5.0), (1e5, 1e6), (1e6, 1e6)]


def gamma_lower(y, a):
    term = total = mp.mpf(1)
    n = a
    while term > total * mp.mpf(10) ** -55:
        n += 1
        term *= y / n
        total += term
    return mp.exp(a * mp.log(y) - y - mp.loggamma(a + 1)) * total


def beta_fraction(x, a, b):
    c, d = mp.mpf(1), 1 / (1 - (a + b) * x / (a + 1))
    h, m = d, 0
    while True:
        m += 1
        for numerator in (m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m)),
                          -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1))):
            d = 1 / (1 + numerator * d)
            c = 1 + numerator / c
            h *= c * d
        if abs(c * d - 1) < mp.mpf(10) ** -50:
            return h


def beta_lower(x, a, b):
    if x > (a + 1) / (a + b + 2):
        return 1 - beta_lower(1 - x, b, a)
    front = mp.exp(a * mp.log(x) + b * mp.log(1 - x) + mp.loggamma(a + b) - mp.loggamma(a)
                   - mp.loggamma(b))
    return front * beta_fraction(x, a, b) / a


def chi(x, df):
    y, a = mp.mpf(x) / 2, mp.mpf(df) / 2
    return gamma_lower(y, a)


def f(x, df1, df2):
    x, a, b = mp.mpf(x), mp.mpf(df1), mp.mpf(df2)
    return beta_lower(a * x / (a * x + b), a / 2, b / 2)


def t(x, df):
    x, n = mp.mpf(x), mp.mpf(df)
    tail = beta_lower(n / (n + x * x), n / 2, mp.mpf(1) / 2) / 2
    return 1 - tail if x > 0 else tail


def rows():
    for df in DEGREES:
        for p in PROBABILITIES:
            yield "chi", chi, stats.chi2.ppf(p, df), (df,)
            yield "t", t, stats.t.ppf(p, df), (df,)
    for pair in PAIRS:
        for p in PROBABILITIES:
            yield "f", f, stats.f.ppf(p, *pair), pair


def main():
    out = csv.writer(sys.stdout, lineterminator="\n")
    out.writerow(["function", "x", "df1", "df2", "probability"])
    for name, function, x, df in rows():
        x = float(f"{x:.5e}")
        if not 1e-290 < abs(x) < 1e290:
            continue
        probability = function(x, *df)
        if 1e-301 < probability < 1:
            out.writerow([name, repr(x), df[0], df[1] if len(df) > 1 else 0,
                          mp.nstr(probability, 20)])


if __name__ == "__main__":
    main()
