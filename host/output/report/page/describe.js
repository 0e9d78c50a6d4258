// The variables of a table, one by one: what they hold, what they lack, and how they will be taken.

// Why a variable has its level, by the program's word.
const LEVEL_REASONS = {given: "as you said", text: "since it holds texts", empty: "since it holds nothing",
  integers: "since its numbers are whole and MANY", fractions: "since its numbers have fractions"};

const FIRST_VARIABLES = 60;

function missingFigure(variables, cases) {
  const lacking = variables.map((v) => [v, v.missing + v.user_missing]).filter(([, n]) => n > 0).sort((a, b) => b[1] - a[1]);
  if (lacking.length === 0) return el("p", null, "No value is missing.");
  const shown = lacking.slice(0, 40);
  const svg = rowsChart({rows: shown, labels: shown.map(([v]) => nameOf(v)), domain: [0, shown[0][1] / cases], xText: wholePercent, xTitle: "Share of the cases",
    numbers: ([, n]) => `${count(n)} (${percent(n / cases)})`, rowHeight: 20, mark: ([v, n], y, sx, height) => [
      draw("rect", {class: "fill k0", x: sx(0), y: y + 3, width: sx(v.missing / cases) - sx(0), height: height - 6}),
      draw("rect", {class: "fill k1", x: sx(v.missing / cases), y: y + 3, width: sx(n / cases) - sx(v.missing / cases), height: height - 6})]});
  return figure({title: "Missing values", svg, above: lacking.some(([v]) => v.user_missing > 0) ? legend(["no value", "a value that stands for none"]) : null,
    description: `${plural(lacking.length, "variable lacks", "variables lack")} values${lacking.length > shown.length ? `; the first ${shown.length} are drawn` : ""}.`,
    table: [["Variable", "No value", "Declared missing", "Share"], lacking.map(([v, n]) => [nameOf(v), v.missing, v.user_missing, n / cases])]});
}

// A row a pattern, the most frequent on top: filled where the variable above has no value.
function patternsFigure({rows, distinct}, variables, cases) {
  const lacking = [...new Set(rows.flatMap((row) => row.missing))];
  if (lacking.length < 2) return null;
  const nMissing = (j) => variables[j].missing + variables[j].user_missing;
  const each = 18, width = chartWidth(), most = Math.max(4, Math.min(24, Math.floor((width - 190) / each)));
  const shown = lacking.sort((a, b) => nMissing(b) - nMissing(a) || a - b).slice(0, most);
  const names = shown.map((j) => fitting(nameOf(variables[j]), 100));
  const top = 14 + 0.87 * Math.max(...names.map(textWidth)), right = 10 + shown.length * each;
  const svg = canvas(width, top + rows.length * each + 6);
  names.forEach((name, i) => svg.append(draw("text", {transform: `translate(${10 + (i + 0.7) * each} ${top - 5}) rotate(-60)`},
    draw("title", null, nameOf(variables[shown[i]])), name)));
  rows.forEach(({cases: n, missing}, r) => {
    const y = top + r * each, others = missing.filter((j) => !shown.includes(j)).length;
    shown.forEach((j, i) => svg.append(draw("rect", {class: missing.includes(j) ? "fill k0" : "fill empty", x: 10 + i * each + 1, y: y + 1, width: each - 2, height: each - 2, rx: 2},
      draw("title", null, `${nameOf(variables[j])}: ${missing.includes(j) ? "missing" : "there"}`))));
    svg.append(draw("text", {x: right + 10, y: y + 13}, `${count(n)} (${percent(n / cases)})${others > 0 ? ` +${others}` : missing.length === 0 ? " lack nothing" : ""}`));
  });
  const besides = distinct === null ? "there are many more, of which the rarest were not counted" : `there are ${count(distinct - rows.length)} more`;
  const unsure = Math.max(...rows.map((row) => row.more));
  return figure({title: "Values missing together", svg,
    description: `Which variables lack their values in the same cases: a row for each pattern, and the number of cases that have it${distinct === rows.length ? "" : `; ${besides}`}.${
      rows.some((row) => row.missing.some((j) => !shown.includes(j))) ? " After a + stands how many variables are missing besides those drawn." : ""}${
      unsure > 0 ? ` A number may be too small, by up to ${count(unsure)}.` : ""}`,
    table: [["Cases", "Share", "Variables without a value"], rows.map((row) => [row.cases, row.cases / cases, row.missing.map((j) => nameOf(variables[j])).join(", ")])]});
}

function numbersFigure(variable) {
  const {low, high, counts, ends, quantiles, mean, deviation} = variable.numbers;
  const step = (high - low) / counts.length;
  const x = high > low ? [low, high] : [low - 0.5, low + 0.5];
  const [svg, sx, sy] = frame({height: 190, x, y: [0, Math.max(1, ...counts)], xTitle: "", yTitle: "Cases",
    xText: variable.time ? () => "" : axisText, yText: wholeAxisText});
  counts.forEach((value, i) => svg.append(draw("rect", {class: "fill k0", x: sx(high > low ? low + i * step : x[0]), y: sy(value),
    width: Math.max(1, (high > low ? sx(low + step) - sx(low) : sx(x[1]) - sx(x[0])) - 1), height: sy(0) - sy(value)},
  draw("title", null, `${plain(low + i * step)} to ${plain(low + (i + 1) * step)}: ${count(value)}`))));
  if (variable.time) {
    svg.append(draw("text", {class: "soft", x: sx(x[0]), y: 180}, ends[0]), draw("text", {class: "soft", x: sx(x[1]), y: 180, "text-anchor": "end"}, ends[1]));
  }
  const facts = variable.time ? [["from", ends[0]], ["to", ends[1]]]
    : [["minimum", low], ["5%", quantiles[0]], ["quartile", quantiles[1]], ["median", quantiles[2]], ["quartile", quantiles[3]], ["95%", quantiles[4]], ["maximum", high],
      ["mean", mean], ["standard deviation", deviation]];
  return figure({title: nameOf(variable), svg, above: variableText(variable), table: [["", "Value"], facts]});
}

function categoriesFigure(variable) {
  const {categories, valid, distinct} = variable;
  const others = valid - sum(categories.map(([, n]) => n));
  const rows = others > 0.5 && categories.length > 0 ? [...categories, [`${count(distinct - categories.length)} others`, others]] : categories;
  if (rows.length === 0) return el("figure", null, el("figcaption", null, el("h3", null, said(nameOf(variable)))), variableText(variable));
  const svg = rowsChart({rows, labels: rows.map(([text]) => text), domain: [0, Math.max(...rows.map(([, n]) => n)) / valid], xText: wholePercent, xTitle: "Share of the values",
    numbers: ([, n]) => count(n), rowHeight: 20,
    mark: ([, n], y, sx, height) => [draw("rect", {class: "fill k0", x: sx(0), y: y + 3, width: sx(n / valid) - sx(0), height: height - 6})]});
  return figure({title: nameOf(variable), svg, above: variableText(variable), table: [["Value", "Cases", "Share"], rows.map(([text, n]) => [text, n, n / valid])]});
}

function variableText(variable) {
  const taken = variable.level === "scale" ? "a number on a scale" : variable.level === "ordinal" ? "ordered categories" : "categories";
  return el("p", {class: "soft"}, variable.label ? [said(variable.name), ". "] : null, `Taken as ${taken}, ${(LEVEL_REASONS[variable.reason] || variable.reason).replace("MANY", variable.level === "scale" ? "many" : "few")}. `,
    `${plural(variable.valid, "value", "values")}, ${variable.exact ? "" : "about "}${count(Math.round(variable.distinct))} different; ${count(variable.missing + variable.user_missing)} missing.`);
}

function descriptionSection({cases, variables, patterns}) {
  const found = el("p", {class: "soft", role: "status"});
  const cards = el("div", {class: "several small"});
  const made = new Map();
  const cardOf = (variable) => {
    if (!made.has(variable)) made.set(variable, variable.numbers ? numbersFigure(variable) : categoriesFigure(variable));
    return made.get(variable);
  };
  let text = "", most = FIRST_VARIABLES;
  const more = el("button", {type: "button", click: () => { most += 200; show(); }}, "Show more");
  const show = () => {
    const chosen = variables.filter((v) => v.name.toLowerCase().includes(text) || v.label.toLowerCase().includes(text));
    found.textContent = `${plural(chosen.length, "variable", "variables")} of ${count(variables.length)}`;
    cards.replaceChildren(...drawnIn("small", () => chosen.slice(0, most).map(cardOf)));
    more.hidden = chosen.length <= most;
  };
  const search = el("input", {type: "search", id: newId(), input: () => { text = search.value.toLowerCase(); show(); }});
  show();
  const ofLevel = (level) => variables.filter((v) => v.level === level).length;
  return [facts([["Cases", count(cases)],
    ["Variables", `${count(variables.length)}: ${count(ofLevel("scale"))} numbers, ${count(ofLevel("nominal") + ofLevel("ordinal"))} categories`]]),
  el("div", {class: "several"}, missingFigure(variables, cases), patternsFigure(patterns, variables, cases)), el("h3", null, "Variables"),
  el("div", {class: "controls"}, el("label", {for: search.id}, "Search ", search)), found, cards, more];
}
