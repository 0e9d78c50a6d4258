#!/usr/bin/env python3
"""Makes effect_reference.csv: function;arguments;values, numbers parted by blanks.

cdf_chi, cdf_f         x df (df2) lambda; the noncentral probability, a Poisson mixture summed in 40 digits
lambda_chi, lambda_f   x df (df2) p; the noncentrality, found with scipy's noncentral distributions and
                       made good with the mixture (17 digits)
bh, holm               p-values; the adjusted ones of statsmodels
table                  rows columns counts; Pearson's X2, df, ln p, bias-corrected V, its interval, bits, and
                       whether expected counts are too small (scipy.stats.contingency and entropy)
groups                 sizes, 0, values; F, df1, df2, ln p, eta squared, omega squared, interval
                       (statsmodels' anova_lm)
pairs                  x values, y values; t, df, ln p, r, interval (scipy's pearsonr)

ln p is taken from 40 digits at the statistic; statistics and sizes are good to about 13 digits.

Needs scipy, statsmodels, pandas and mpmath; not needed to run the tests.
"""

import sys

import mpmath as mp
import numpy as np
import pandas as pd
from scipy import optimize, stats
from scipy.stats import contingency
from statsmodels.formula.api import ols
from statsmodels.stats.anova import anova_lm
from statsmodels.stats.multitest import multipletests

mp.mp.dps = 40


def mixture(central, lam):
    """Sum of Poisson weights times central probabilities, every weight that 30 digits can see."""
    half = mp.mpf(lam) / 2
    spread = 20 * mp.sqrt(half) + 60
    first = max(0, int(half - spread))
    weight = mp.exp(-half + first * mp.log(half) - mp.loggamma(first + 1)) if half else mp.mpf(1)
    total, k = mp.mpf(0), first
    while k <= half + spread:
        total += weight * central(k)
        k += 1
        weight *= half / k
    return total


def cdf_chi(x, df, lam):
    return mixture(lambda k: mp.gammainc(mp.mpf(df) / 2 + k, 0, mp.mpf(x) / 2, regularized=True), lam)


def cdf_f(x, df1, df2, lam):
    at = mp.mpf(df1) * x / (mp.mpf(df1) * x + df2)
    return mixture(lambda k: mp.betainc(mp.mpf(df1) / 2 + k, mp.mpf(df2) / 2, 0, at, regularized=True), lam)


def lambda_at(cdf, quick, p):
    """A root by scipy's function, made good by the secant method in 40 digits."""
    if quick(0.0) <= p:
        return mp.mpf(0)
    high = 1.0
    while quick(high) > p:
        high *= 2
    root = optimize.brentq(lambda lam: quick(lam) - p, 0, high, xtol=1e-12)
    return mp.findroot(lambda lam: cdf(lam) - p, (root, root * (1 + 1e-7)), tol=1e-30)


def lambda_chi(x, df, p):
    quick = lambda lam: stats.ncx2.cdf(x, df, lam) if lam else stats.chi2.cdf(x, df)
    return lambda_at(lambda lam: cdf_chi(x, df, lam), quick, p)


def lambda_f(x, df1, df2, p):
    quick = lambda lam: stats.ncf.cdf(x, df1, df2, lam) if lam else stats.f.cdf(x, df1, df2)
    return lambda_at(lambda lam: cdf_f(x, df1, df2, lam), quick, p)


def table(counts):
    counts = np.array(counts, float)
    rows, columns = counts.shape
    n = counts.sum()
    expected = contingency.expected_freq(counts)
    chi2 = contingency.chi2_contingency(counts, correction=False)
    phi2 = max(0.0, chi2.statistic / n - chi2.dof / (n - 1))
    v = np.sqrt(phi2 / (min(rows - (rows - 1) ** 2 / (n - 1), columns - (columns - 1) ** 2 / (n - 1)) - 1))
    bounds = [mp.sqrt(lambda_chi(chi2.statistic, chi2.dof, p) / (n * (min(rows, columns) - 1)))
              for p in (0.975, 0.025)]
    bits = (stats.entropy(counts.sum(0), base=2) + stats.entropy(counts.sum(1), base=2)
            - stats.entropy(counts.ravel(), base=2))
    few = (expected < 5).mean() > 0.2 or expected.min() < 1
    log_p = mp.log(mp.gammainc(mp.mpf(chi2.dof) / 2, mp.mpf(chi2.statistic) / 2, mp.inf, regularized=True))
    return [chi2.statistic, chi2.dof, log_p, min(v, 1.0), *(min(b, mp.mpf(1)) for b in bounds), bits, int(few)]


def groups(samples):
    data = pd.DataFrame([(i, y) for i, sample in enumerate(samples) for y in sample], columns=["g", "y"])
    anova = anova_lm(ols("y ~ C(g)", data).fit())
    between, within = anova["sum_sq"]
    df1, df2 = anova["df"]
    f = anova["F"].iloc[0]
    n = len(data)
    omega = max(0.0, (between - df1 * within / df2) / (between + within + within / df2))
    bounds = [lam / (lam + n) for lam in (lambda_f(f, df1, df2, p) for p in (0.975, 0.025))]
    x = mp.mpf(df2) / (df2 + df1 * mp.mpf(f))
    log_p = mp.log(mp.betainc(mp.mpf(df2) / 2, mp.mpf(df1) / 2, 0, x, regularized=True))
    return [f, df1, df2, log_p, between / (between + within), omega, *bounds]


def pairs(x, y):
    result = stats.pearsonr(x, y)
    interval = result.confidence_interval(0.95)
    df = len(x) - 2
    t = result.statistic * np.sqrt(df / (1 - result.statistic ** 2))
    at = mp.mpf(df) / (df + mp.mpf(t) ** 2)
    log_p = mp.log(mp.betainc(mp.mpf(df) / 2, mp.mpf(1) / 2, 0, at, regularized=True))
    return [t, df, log_p, result.statistic, interval.low, interval.high]


def write(function, arguments, values):
    show = lambda value: mp.nstr(value, 17) if isinstance(value, mp.mpf) else repr(float(value))
    print(f"{function};{' '.join(repr(a) for a in arguments)};{' '.join(show(v) for v in values)}")


def main():
    for arguments in [(3.0, 1, 0.0), (3.0, 1, 2.5), (0.01, 4, 7), (40.0, 5, 12.5), (1.5, 0.5, 30.0),
                      (120.0, 20, 60.0), (2100.0, 4, 2000.0), (19500.0, 99, 20000.0), (5.0, 3, 300.0)]:
        write("cdf_chi", arguments, [cdf_chi(*arguments)])
    for arguments in [(2.0, 1, 10, 0.0), (4.0, 3, 16, 5.5), (0.05, 2, 8, 1.0), (30.0, 4, 95, 100.0),
                      (900.0, 1, 567, 900.0), (1.2, 20, 4000, 7.0), (110.0, 2, 9997, 250.0), (9.0, 7, 3, 40.0)]:
        write("cdf_f", arguments, [cdf_f(*arguments)])
    for x, df in [(30.0, 15), (3.9, 1), (0.0001, 2), (95.5, 6), (1200.0, 12), (8.0, 40)]:
        for p in (0.975, 0.025):
            write("lambda_chi", (x, df, p), [lambda_chi(x, df, p)])
    for x, df1, df2 in [(5.134, 2, 8), (964.385, 1, 567), (0.02, 3, 40), (6.0, 3, 50), (1.3, 30, 2000)]:
        for p in (0.975, 0.025):
            write("lambda_f", (x, df1, df2, p), [lambda_f(x, df1, df2, p)])
    p = [0.01, 0.04, 0.03, 0.005, 0.9, 0.03, 1e-200, 1.0]
    write("bh", p, multipletests(p, method="fdr_bh")[1])
    write("holm", p, multipletests(p, method="holm")[1])
    for counts in [[[150, 100, 165, 130], [50, 65, 35, 10], [2, 55, 40, 25]],
                   [[10, 0], [0, 10]], [[20, 21], [19, 20]], [[3, 1, 4], [1, 5, 9], [2, 6, 5], [3, 5, 8]],
                   [[4, 40], [6, 60]], [[120, 30, 10], [20, 140, 35]]]:
        write("table", [len(counts), len(counts[0])] + sum(counts, []), table(counts))
    for samples in [[[4, 3, 2, 3], [3, 5, 8], [3, 1, 0, 2]], [[1.5, 2.25, 3], [2, 2.5, 2.75, 1.25]],
                    [[1, 2, 3, 4, 5], [11, 12, 13, 14], [21, 22.5, 23]]]:
        write("groups", [len(s) for s in samples] + [0] + sum(samples, []), groups(samples))
    lightness = [44.4, 45.9, 41.9, 53.3, 44.7, 44.1, 50.7, 45.2, 60.1]
    panel = [2.6, 3.1, 2.5, 5.0, 3.6, 4.0, 5.2, 2.8, 3.8]
    write("pairs", lightness + panel, pairs(lightness, panel))
    write("pairs", [1, 2, 3, 4, 5, 9, 8, 8, 5, 6], pairs([1, 2, 3, 4, 5], [9, 8, 8, 5, 6]))


sys.exit(main())
