// Predictions: how often each class, and how surely.

function predictionsSection({target, cases, predicted, means, sureness}) {
  if (cases === 0) return el("p", {class: "notice"}, "No case could be predicted.");
  const order = predicted.map((value, k) => k).sort((a, b) => predicted[b] - predicted[a]).slice(0, 30);
  const colorOf = (k) => (predicted.length > 12 ? "k0" : classColor(k));
  const classes = rowsChart({rows: order, labels: order.map((k) => target.categories[k]), domain: [0, Math.max(...predicted) / cases], xText: wholePercent,
    xTitle: "Share of the predicted cases", numbers: (k) => count(predicted[k]),
    mark: (k, y, sx, height) => [draw("rect", {class: `fill ${colorOf(k)}`, x: sx(0), y: y + 4, width: sx(predicted[k] / cases) - sx(0), height: height - 8})]});
  const step = 1 / sureness.length, most = Math.max(...sureness);
  const [sure, sx, sy] = frame({x: [0, 1], y: [0, most], height: 260, xTitle: "Probability of the predicted class", yTitle: "Cases", xText: wholePercent, yText: wholeAxisText});
  sureness.forEach((value, i) => sure.append(draw("rect", {class: "fill k0", x: sx(i * step) + 0.5, width: sx(step) - sx(0) - 1, y: sy(value), height: sy(0) - sy(value)},
    draw("title", null, `${percent(i * step)} to ${percent((i + 1) * step)}: ${count(value)}`))));
  const named = (k) => [target.categories[k], predicted[k], predicted[k] / cases, means[k]];
  return el("div", {class: "several"},
    figure({title: `Predicted: ${nameOf(target)}`, svg: classes, description: order.length < predicted.length ? "The thirty most frequent ones." : null,
      table: [["Class", "Cases", "Share", "Mean probability"], predicted.map((_, k) => named(k))]}),
    figure({title: "How sure the model is", svg: sure, description: "Sure is not right: only cases whose class is known can tell.",
      table: [["From", "to", "Cases"], sureness.map((value, i) => [i * step, (i + 1) * step, value])]}));
}
