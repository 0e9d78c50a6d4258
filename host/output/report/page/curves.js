// What follows from the counts by steps of probability: curves of one class against the others.

// A step is [number, weight of the class, weight of the others, mean probability], ascending.
function curvesOf(steps) {
  const of = sum(steps.map((s) => s[1])), others = sum(steps.map((s) => s[2]));
  const roc = [[0, 0]], precision = [], gain = [[0, 0]];
  let hits = 0, misses = 0, area = 0, average = 0;
  for (const [, h, m] of steps.toReversed()) {
    const [h0, m0] = [hits, misses];
    hits += h;
    misses += m;
    area += others > 0 && of > 0 ? ((misses - m0) / others) * ((hits + h0) / 2 / of) : 0;
    average += of > 0 ? (h / of) * (hits / (hits + misses)) : 0;
    roc.push([others > 0 ? misses / others : 0, of > 0 ? hits / of : 0]);
    if (hits > 0) precision.push([hits / of, hits / (hits + misses)]);
    gain.push([(hits + misses) / (of + others), of > 0 ? hits / of : 0]);
  }
  return {of, others, roc, precision, gain, area: of > 0 && others > 0 ? area : null, average: of > 0 ? average : null};
}

// At most `most` groups of about equal weight: mean probability, observed share, weight.
function calibrationOf(steps, most = 10) {
  const total = sum(steps.map((s) => s[1] + s[2]));
  const groups = [];
  let group = [0, 0, 0], passed = 0;
  for (const [, h, m, p] of steps) {
    group = [group[0] + p * (h + m), group[1] + h, group[2] + h + m];
    passed += h + m;
    if (passed >= ((groups.length + 1) * total) / most - 1e-9) {
      groups.push([group[0] / group[2], group[1] / group[2], group[2]]);
      group = [0, 0, 0];
    }
  }
  if (group[2] > 0) groups.push([group[0] / group[2], group[1] / group[2], group[2]]);
  return groups;
}

// So many points draw any curve.
const thinned = (points, most = 400) => (points.length <= most ? points
  : points.filter((_, i) => i === 0 || i === points.length - 1 || i % Math.ceil(points.length / most) === 0));

function curveFigure({title, description, points, xTitle, yTitle, guide, dots, xMost = 1, yMost = 1, headings, rows}) {
  const [svg, sx, sy] = frame({height: 300, x: [0, xMost], y: [0, yMost], xTitle, yTitle, xText: wholePercent, yText: yMost > 1 ? axisText : wholePercent});
  if (guide) svg.append(draw("path", {class: "axis", fill: "none", "stroke-dasharray": "5 4", d: path(guide, sx, sy)}));
  svg.append(draw("path", {class: "stroke k0", "stroke-width": 2, d: path(thinned(points), sx, sy)}));
  if (dots) for (const [x, y, weight] of points) svg.append(draw("circle", {class: "fill k0", cx: sx(x), cy: sy(y), r: 4}, draw("title", null, `${percent(x)} predicted, ${percent(y)} observed, ${count(weight)} cases`)));
  return figure({title, description, svg, table: [headings, rows || thinned(points, 60)]});
}

// `area` is that of the cases themselves, where it is known; that of the curve is near to it.
function curveFigures(name, steps, area) {
  const curves = curvesOf(steps);
  if (!(curves.of > 0) || !(curves.others > 0)) {
    return [el("p", {class: "notice"}, "The sample holds no case of this class, or no other: there are no curves.")];
  }
  const share = curves.of / (curves.of + curves.others);
  const groups = calibrationOf(steps);
  const most = Math.min(1, Math.ceil(10 * Math.max(...groups.flatMap(([predicted, observed]) => [predicted, observed]))) / 10);
  const lift = curves.gain.slice(1).map(([x, y]) => [x, y / x]);
  return [
    curveFigure({title: "ROC", description: `Area ${area === null ? `about ${decimals(curves.area)}` : decimals(area)}: the chance that a case of ${name} gets a higher probability than another one.`,
      points: curves.roc, guide: [[0, 0], [1, 1]], xTitle: "False positive rate: others taken for it", yTitle: "True positive rate: found of it", headings: ["False positive rate", "True positive rate"]}),
    curveFigure({title: "Precision and recall", description: `Average precision ${decimals(curves.average)}; by guessing ${decimals(share)}.`,
      points: curves.precision, guide: [[0, share], [1, share]], xTitle: "Recall: found of the class", yTitle: "Precision", headings: ["Recall", "Precision"]}),
    curveFigure({title: "Calibration", description: "Groups of about as many cases, by their probability. On the dashed line predicted probabilities are observed shares.", dots: true,
      points: groups, guide: [[0, 0], [most, most]], xMost: most, yMost: most, xTitle: "Predicted probability", yTitle: "Observed share", headings: ["Predicted", "Observed", "Cases"]}),
    curveFigure({title: "Gain", description: "How much of the class is found in the most promising cases.", points: curves.gain, guide: [[0, 0], [1, 1]],
      xTitle: "Share of all cases", yTitle: "Found of the class", headings: ["Cases", "Found"]}),
    curveFigure({title: "Lift", description: "How many times as often the class occurs there as in all cases.", points: lift, guide: [[0, 1], [1, 1]],
      yMost: Math.max(1.1, ...lift.map((p) => p[1])), xTitle: "Share of all cases", yTitle: "Lift", headings: ["Cases", "Lift"]})];
}
