// What one predictor looks like beside the target.

const othersText = (n) => `${plural(n, "other", "others")} together`;

// The target's categories as they are told apart in drawings.
const classTexts = (target) => [...target.categories, ...(target.others > 0 ? [othersText(target.others)] : [])];

const sum = (numbers) => numbers.reduce((a, b) => a + b, 0);

// Stacked shares of the classes in each category.
function sharesFigure(variable, target, shares) {
  const classes = classTexts(target);
  const labels = [...shares.rows, ...(shares.others > 0 ? [othersText(shares.others)] : [])];
  const totals = shares.counts.map(sum);
  const all = shares.counts[0].map((_, k) => sum(shares.counts.map((row) => row[k])));
  const rows = [...shares.counts, all];
  const svg = rowsChart({rows, labels: [...labels, "All"], domain: [0, 1], xText: wholePercent,
    xTitle: `Share of ${nameOf(target)}`, numbers: (row) => count(sum(row)),
    mark: (row, y, sx, height) => {
      const total = sum(row) || 1;
      let from = 0;
      return row.map((value, k) => {
        const bar = draw("rect", {class: `fill ${classColor(k)}`, x: sx(from / total), y: y + 3,
          width: Math.max(0, sx((from + value) / total) - sx(from / total)), height: height - 6},
        draw("title", null, `${classes[k]}: ${count(value)} (${percent(value / total)})`));
        from += value;
        return bar;
      });
    }});
  return figure({title: `${nameOf(target)} by ${nameOf(variable)}`, svg, above: legend(classes),
    description: "How the classes share the cases of each category; the number of cases stands at the right.",
    table: [[nameOf(variable), "Cases", ...classes.flatMap((text) => [text, `${text}, share`])],
      labels.map((label, i) => [label, totals[i], ...shares.counts[i].flatMap((value) => [value, totals[i] > 0 ? value / totals[i] : null])])]});
}

// A small histogram for each class over a common scale, with mean and deviation where they are known.
function histogramsFigure(variable, target, bins, groups) {
  const classes = classTexts(target);
  const width = chartWidth(), each = 54, right = 12;
  const left = Math.min(width * 0.34, 12 + Math.max(...classes.map((text) => textWidth(text)), 40));
  const sx = linear([bins.low, bins.high], [left, width - right]);
  const step = (bins.high - bins.low) / bins.counts.length;
  const totals = classes.map((_, k) => sum(bins.counts.map((row) => row[k])));
  const most = Math.max(...bins.counts.flatMap((row) => row.map((value, k) => (totals[k] > 0 ? value / totals[k] : 0))));
  const height = classes.length * each + 46;
  const svg = canvas(width, height);
  for (const t of ticks([bins.low, bins.high], 5)) {
    svg.append(draw("line", {class: "grid", x1: sx(t), x2: sx(t), y1: 4, y2: height - 42}),
      draw("text", {class: "soft", x: sx(t), y: height - 26, "text-anchor": "middle"}, axisText(t)));
  }
  classes.forEach((text, k) => {
    const base = (k + 1) * each;
    svg.append(draw("text", {x: left - 8, y: base - 18, "text-anchor": "end"}, draw("title", null, text), fitting(text, left - 10)),
      draw("text", {class: "soft", x: left - 8, y: base - 3, "text-anchor": "end"}, count(totals[k])),
      draw("line", {class: "axis", x1: left, x2: width - right, y1: base, y2: base}));
    bins.counts.forEach((row, i) => {
      const share = totals[k] > 0 ? row[k] / totals[k] : 0;
      const size = most > 0 ? (share / most) * (each - 10) : 0;
      svg.append(draw("rect", {class: `fill ${classColor(k)}`, x: sx(bins.low + i * step) + 0.5, y: base - size,
        width: Math.max(1, sx(bins.low + (i + 1) * step) - sx(bins.low + i * step) - 1), height: size},
      draw("title", null, `${text}, ${plain(bins.low + i * step)} to ${plain(bins.low + (i + 1) * step)}: ${count(row[k])} (${percent(share)})`)));
    });
    const moments = groups && groups.stats[k];
    if (moments) svg.append(...whisker(moments[1], moments[2], base + 4, sx));
  });
  svg.append(draw("text", {x: (left + width - right) / 2, y: height - 6, "text-anchor": "middle"}, fitting(nameOf(variable), width - 8)));
  const edge = (i) => plain(bins.low + i * step);
  const moments = (name, place) => [name, "", ...classes.map((_, k) => (groups.stats[k] ? groups.stats[k][place] : null))];
  return figure({title: `${nameOf(variable)} in each class of ${nameOf(target)}`, svg,
    description: groups ? "Share of each class by bin; the line below marks mean and standard deviation." : "Share of each class by bin.",
    table: [[`${nameOf(variable)}, from`, "to", ...classes], [...bins.counts.map((row, i) => [edge(i), edge(i + 1), ...row]),
      ...(groups ? [moments("Mean", 1), moments("Standard deviation", 2)] : [])]]});
}

function whisker(mean, deviation, y, sx) {
  return [draw("line", {class: "axis", x1: sx(mean - deviation), x2: sx(mean + deviation), y1: y, y2: y, "stroke-width": 2}),
    draw("circle", {cx: sx(mean), cy: y, r: 4, class: "fill k0"}, draw("title", null, `${plain(mean)} ± ${plain(deviation)}`))];
}

// Mean and deviation of a number in each category of the other variable.
function momentsFigure(title, labels, stats, axisName, keyName) {
  const known = stats.filter(Boolean);
  const ends = known.flatMap(([, mean, deviation]) => [mean - deviation, mean + deviation]);
  const shown = labels.map((label, i) => [label, stats[i]]).filter(([, moments]) => moments);
  const svg = rowsChart({rows: shown.map(([, moments]) => moments), labels: shown.map(([label]) => label),
    domain: [Math.min(...ends), Math.max(...ends)], xTitle: `${axisName}: mean and standard deviation`,
    numbers: (row) => count(row[0]), mark: (row, y, sx, height) => whisker(row[1], row[2], y + height / 2, sx)});
  return figure({title, svg, description: "Mean, and one standard deviation to either side; the number of cases stands at the right.",
    table: [[keyName, "Cases", `Mean of ${axisName}`, "Standard deviation"], shown.map(([label, moments]) => [label, ...moments])]});
}

// Two numbers: the mean of the target over bins of the predictor, and the line through all cases.
function lineFigure(variable, target, line, bins) {
  const [mx, dx] = line.x, [my, dy] = line.y;
  const slope = dx > 0 && line.r !== null ? (line.r * dy) / dx : 0;
  const x = bins ? [bins.low, bins.high] : [mx - 2.5 * dx, mx + 2.5 * dx];
  const step = (x[1] - x[0]) / (bins ? bins.means.length : 1);
  const points = bins ? bins.means.map(([weight, mean], i) => [x[0] + (i + 0.5) * step, mean, weight]).filter((p) => p[2] > 0) : [];
  const fitted = x.map((value) => [value, my + slope * (value - mx)]);
  const heights = [...points.map((p) => p[1]), my - dy, my + dy];
  const room = 0.06 * (Math.max(...heights) - Math.min(...heights));
  const y = [Math.min(...heights) - room, Math.max(...heights) + room];
  const [svg, sx, sy] = frame({x, y, xTitle: nameOf(variable), yTitle: nameOf(target)});
  const clip = newId();
  svg.append(draw("clipPath", {id: clip}, draw("rect", {x: sx(x[0]), y: sy(y[1]), width: sx(x[1]) - sx(x[0]), height: sy(y[0]) - sy(y[1])})),
    draw("path", {class: "stroke k1", d: path(fitted, sx, sy), "stroke-width": 2, "stroke-dasharray": "6 4", "clip-path": `url(#${clip})`}));
  const most = Math.max(1, ...points.map((p) => p[2]));
  for (const [px, py, weight] of points) {
    svg.append(draw("circle", {class: "fill k0", cx: sx(px), cy: sy(py), r: 2.5 + 7 * Math.sqrt(weight / most), opacity: 0.85},
      draw("title", null, `${plain(px - step / 2)} to ${plain(px + step / 2)}: mean ${plain(py)} of ${count(weight)} cases`)));
  }
  return figure({title: `${nameOf(target)} by ${nameOf(variable)}`, svg,
    description: bins ? "Dots: the target's mean in each bin of the predictor (to the width of the target's own bins), larger with more cases. Dashed: the straight line through all cases."
      : "The straight line through all cases. This command has not counted them in bins.",
    table: bins ? [[`${nameOf(variable)}, from`, "to", "Cases", `Mean of ${nameOf(target)}`], points.map(([px, py, weight]) => [plain(px - step / 2, 6), px + step / 2, weight, py])]
      : [["Variable", "Mean", "Standard deviation"], [[nameOf(variable), mx, dx], [nameOf(target), my, dy]]]});
}

function shapeFigures(variable, target) {
  const shape = variable.shape || {};
  const found = [];
  if (shape.shares) found.push(sharesFigure(variable, target, shape.shares));
  if (shape.line) found.push(lineFigure(variable, target, shape.line, shape.bins && shape.bins.means ? shape.bins : null));
  if (shape.bins && shape.bins.counts) found.push(histogramsFigure(variable, target, shape.bins, shape.groups));
  else if (shape.groups && shape.groups.of === "predictor") {
    found.push(momentsFigure(`${nameOf(variable)} in each class of ${nameOf(target)}`, target.categories, shape.groups.stats, nameOf(variable), nameOf(target)));
  } else if (shape.groups) {
    found.push(momentsFigure(`${nameOf(target)} by ${nameOf(variable)}`, shape.groups.rows, shape.groups.stats, nameOf(target), nameOf(variable)));
  }
  return found.length > 0 ? found : [el("p", {class: "soft"}, "Nothing was counted of it beside the target.")];
}
