// A Naive Bayes model: how it came about, how well it does, and what it goes by.

function pathFigure(steps, chosen, byTest) {
  const rows = steps.map((s) => [s.size, s.added, s.criterion, s.log_likelihood === null ? null : -s.log_likelihood]);
  const name = byTest ? "Test cases: −average log-likelihood" : "Pseudo-BIC";
  const compared = rows.filter((r) => r[2] !== null);
  const lines = [[compared.map((r) => [r[0], r[2]]), "k0", name], [rows.filter((r) => r[3] !== null).map((r) => [r[0], r[3]]), "k1", "Training cases: −average log-likelihood"]]
    .filter(([points]) => points.length > 0);
  const values = lines.flatMap(([points]) => points.map((p) => p[1]));
  const span = Math.max(...values) - Math.min(...values) || 1;
  const [svg, sx, sy] = frame({x: [rows[0][0] - 0.3, rows.at(-1)[0] + 0.3], y: [Math.min(...values) - span * 0.06, Math.max(...values) + span * 0.06],
    xTitle: "Predictors in the model", yTitle: "The less the better", xText: (t) => (Number.isInteger(t) ? t : "")});
  for (const [points, color] of lines) {
    svg.append(draw("path", {class: `stroke ${color}`, "stroke-width": 2, d: path(points, sx, sy)}),
      ...points.map(([x, y]) => draw("circle", {class: `fill ${color}`, cx: sx(x), cy: sy(y), r: 3}, draw("title", null, `${plain(x)}: ${plain(y)}`))));
  }
  const best = compared.find((r) => r[0] === chosen);
  if (best) {
    svg.append(draw("line", {class: "axis", "stroke-dasharray": "5 4", x1: sx(best[0]), x2: sx(best[0]), y1: 12, y2: 254}),
      draw("circle", {class: "stroke k0", cx: sx(best[0]), cy: sy(best[2]), r: 8, "stroke-width": 2}),
      draw("text", {x: sx(best[0]) + (best[0] > sx.domain[1] * 0.7 ? -6 : 6), y: 22, "text-anchor": best[0] > sx.domain[1] * 0.7 ? "end" : "start"}, `chosen: ${best[0]}`));
  }
  return figure({title: "The path of the selection", svg, above: legend(lines.map(([, , text]) => text)),
    description: "Each step adds the predictor that helps most; the ringed size is the model.",
    table: [["Size", "Predictor added", name, "Training: −average log-likelihood"], rows]});
}

const MOST_CONFUSED = 40;

function confusionTable(title, matrix, {categories: classes, counts: frequency}) {
  const totals = matrix.map(sum), all = sum(totals), right = sum(matrix.map((row, k) => row[k]));
  const shown = totals.map((_, k) => k).sort((a, b) => frequency[b] - frequency[a]).slice(0, MOST_CONFUSED).sort((a, b) => a - b);
  const guessing = Math.max(...totals) / all;
  const body = shown.map((i) => el("tr", null, el("th", {scope: "row"}, said(classes[i])), shown.map((j) => {
    const value = matrix[i][j];
    const share = totals[i] > 0 ? value / totals[i] : 0;
    const cell = el("td", {class: "number"}, i === j ? el("strong", null, count(value)) : count(value), el("span", {class: "share"}, percent(share)));
    cell.style.background = `rgba(var(--heat), ${(0.55 * share).toFixed(3)})`;
    return cell;
  }), el("td", {class: "number"}, percent(totals[i] > 0 ? matrix[i][i] / totals[i] : null))));
  return el("section", null,
    el("div", {class: "caption"}, el("h3", null, title), el("span", {class: "tools"}, saveButton("CSV", title, () => csvText([["observed", ...classes], ...matrix.map((row, i) => [classes[i], ...row])])))),
    el("p", null, `Right for ${percent(right / all)} of ${count(all)} cases; always guessing the most frequent class would be right for ${percent(guessing)}.`),
    shown.length < classes.length ? el("p", {class: "soft"}, `The ${MOST_CONFUSED} most frequent of ${count(classes.length)} classes; the CSV holds all.`) : null,
    el("div", {class: "scroll tall", tabindex: "0", role: "group", "aria-label": title},
      el("table", {class: "heat"}, el("thead", null, el("tr", null, el("th", {scope: "col"}, "Observed"), shown.map((k) => el("th", {scope: "col", class: "number"}, said(classes[k]))), el("th", {scope: "col", class: "number"}, "Right"))),
        el("tbody", null, body))));
}

// A longer bar would make all others dots: here a value is 150 times as likely in one as in the other.
const MOST_EVIDENCE = 5;

function evidenceFigure(model, input, k) {
  const texts = rowTexts(input), weights = input.counts.map(sum);
  const rows = texts.map((text, m) => [text, evidence(model, input.factors[m], k), weights[m]]).filter((row) => row[2] > 0).slice(0, 60);
  const most = Math.min(MOST_EVIDENCE, Math.max(0.1, ...rows.map((row) => Math.abs(row[1]))));
  const drawn = (value) => Math.max(-most, Math.min(most, value));
  const svg = rowsChart({rows, labels: rows.map((row) => row[0]), domain: [-most, most], xTitle: "Weight of evidence", numbers: (row) => count(row[2]), rowHeight: 20,
    mark: ([, value], y, sx, height) => [draw("rect", {class: `fill ${value >= 0 ? "k0" : "k1"}`, x: sx(Math.min(0, drawn(value))), width: Math.abs(sx(drawn(value)) - sx(0)), y: y + 3, height: height - 6},
      draw("title", null, plain(value))), draw("line", {class: "axis", x1: sx(0), x2: sx(0), y1: y, y2: y + height}),
    ...(drawn(value) === value ? [] : [draw("text", {class: "inside", x: sx(drawn(value) / 2), y: y + height / 2 + 4, "text-anchor": "middle"}, value < 0 ? `« ${plain(value, 3)}` : `${plain(value, 3)} »`)])]});
  const isCut = rows.some((row) => Math.abs(row[1]) > most);
  return figure({title: nameOf(input), svg, description: isCut ? "Bars with a number are longer than drawn: training cases of the class, or of the others, hardly occur there." : null, table: [[nameOf(input), "Weight of evidence", "Training cases"], rows]});
}

// What depends on the class that the reader looks at.
function classPart(model, figuresOf) {
  const {target} = model;
  const content = el("div", {class: "several small"});
  const rarest = target.counts.map((value, k) => [value, k]).filter(([value]) => value > 0).sort((a, b) => a[0] - b[0])[0][1];
  const show = (k) => content.replaceChildren(...drawnIn("small", () => figuresOf(Number(k))));
  show(rarest);
  return [el("div", {class: "controls"}, choice("Class", target.categories.map((text, k) => [k, text]), show, rarest)), content];
}

function modelSection(model) {
  const {target, curves, confusion} = model;
  const sample = curves.test ? "test" : curves.training ? "training" : null;
  const tested = confusion.test !== null;
  const used = (k) => curves[sample].categories[k];
  return [
    facts([["Target", said(nameOf(target))],
      ["Training cases", `${count(model.cases.valid)}${model.cases.valid === model.cases.valid_weight ? "" : `, weight ${count(model.cases.valid_weight)}`}`],
      ["Cases left out", count(model.cases.excluded)],
      ["Predictors", model.inputs.length === 0 ? "none" : model.inputs.map((input, j) => [j > 0 ? ", " : "", said(nameOf(input))])]]),
    excludedSection(model.excluded),
    model.path && model.path.steps.length > 0 && model.path.steps.some((s) => s.log_likelihood !== null) ? pathFigure(model.path.steps, model.path.chosen, model.path.by_test_data) : null,
    el("h3", null, "How well it does"),
    tested || !confusion.training ? null : el("p", {class: "notice loud"}, "There are no test cases. Everything here is measured on the very cases that the model was made from, and flatters it."),
    confusion.training || confusion.test ? null : el("p", {class: "notice"}, "This result holds no count of right and wrong predictions."),
    el("div", {class: "several"},
      tested ? confusionTable("Test cases: observed and predicted", confusion.test, target) : null,
      confusion.training ? confusionTable("Training cases: observed and predicted", confusion.training, target) : null),
    sample === null ? null : [el("h3", null, sample === "test" ? "Probabilities of the test cases" : "Probabilities of the training cases"),
      classPart(model, (k) => (k < curves[sample].categories.length ? curveFigures(target.categories[k], used(k), curves[sample].areas?.[k] ?? null) : [el("p", {class: "soft"}, "Curves are kept for the first classes only.")]))],
    model.inputs.length === 0 ? null : [
      el("h3", null, "What if"), new WhatIf(model).element,
      el("h3", null, "What speaks for a class"),
      el("p", {class: "soft"}, "The logarithm of how many times as likely a value is in the class as in the others: above 0 it speaks for the class, below 0 against it; 0.7 is twice as likely, 2.3 ten times. At the right the training cases."),
      classPart(model, (k) => model.inputs.map((input) => evidenceFigure(model, input, k)))]];
}
