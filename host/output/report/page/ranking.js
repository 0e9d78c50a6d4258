// The ranking of predictors: to sort, to filter, to search, and to look into one by one.

const TESTS = {"X²": "Pearson chi-square", "G²": "likelihood-ratio chi-square", F: "analysis of variance", t: "correlation"};
const SIZES = {V: "Cramér's V, bias-corrected", "η²": "eta squared", r: "correlation"};
const BEYOND_CHANCE = Math.log10(0.05);

const isBelow = (log10, limit) => log10 === "-inf" || (log10 !== null && log10 < limit);

// Why a predictor was left out, by the engine's number of the reason.
function reasonText(reason, threshold) {
  if (reason === 100) return "every training case has the same value";
  return [null, "no case has a value", "every case has the same value",
    `more than ${plain(threshold)}% of the cases have no value`,
    `more than ${plain(threshold)}% of the cases are in one category`,
    `so many categories that they are more than ${plain(threshold)}% of the cases`,
    `more than ${plain(threshold)}% of its categories hold one case`,
    `its standard deviation is below ${plain(threshold)}`,
    `it hardly varies: its coefficient of variation is below ${plain(threshold)}`][reason] || "left out";
}

// Columns: heading, what sorts, first direction, cell, and whether a small screen leaves it out.
const RANKING_COLUMNS = [
  ["Rank", (p) => p.rank, 1, (p) => p.rank],
  ["Predictor", (p) => nameOf(p).toLowerCase(), 1, null],
  ["Effect", (p) => Math.abs(p.size ?? 0), -1, (p) => effectCell(p)],
  ["−log₁₀ p", (p) => zeros(p.log10_p) ?? -1, -1, (p) => (p.log10_p === "-inf" ? "∞" : p.log10_p === null ? DASH : tenths(zeros(p.log10_p)))],
  ["Adjusted p", (p) => zeros(p.log10_fdr) ?? -1, -1, (p) => pValue(p.log10_fdr), true],
  ["Bits", (p) => p.bits ?? -1, -1, (p) => decimals(p.bits), true],
  ["Missing", (p) => p.missing ?? -1, -1, (p) => (p.missing === null ? DASH : `${p.missing.toFixed(1)}%`), true],
];

function effectCell(p) {
  const bar = el("span", {class: "bar"});
  bar.style.width = `${Math.min(1, Math.abs(p.size ?? 0)) * 4}rem`;
  return [`${p.effect} ${decimals(p.size)} `, el("span", {class: "track"}, bar)];
}

// Rows stay whole elements: the browser's own search, copying and printing find all of them.
class RankingTable {
  constructor(predictors, open) {
    this.predictors = predictors;
    this.open = open;
    this.rows = new Map();
    this.sorted = {column: 0, direction: 1};
    this.found = el("p", {class: "soft", role: "status"});
    this.body = el("tbody");
    this.heads = RANKING_COLUMNS.map(([text, , , , optional], i) => el("th",
      {scope: "col", class: [i === 1 ? "" : "number", optional ? "optional" : ""].join(" "), "aria-sort": i === 0 ? "ascending" : "none"},
      el("button", {type: "button", click: () => this.sortBy(i)}, text)));
    this.text = "";
    this.kind = "all";
    this.only = false;
    const search = el("input", {type: "search", id: newId(), input: () => { this.text = search.value.toLowerCase(); this.show(); }});
    const only = el("input", {type: "checkbox", id: newId(), change: () => { this.only = only.checked; this.show(); }});
    const box = el("div", {class: "scroll tall", tabindex: "0", role: "group", "aria-label": "Ranking of the predictors"},
      el("table", {class: "ranking"}, el("thead", null, el("tr", null, this.heads)), this.body));
    this.element = el("div", null,
      el("div", {class: "controls"},
        el("label", {for: search.id}, "Search ", search),
        choice("Kind", [["all", "all"], ["categorical", "categories"], ["scale", "numbers"]], (kind) => { this.kind = kind; this.show(); }, "all"),
        el("label", {for: only.id}, only, "adjusted p below .05 only"),
        el("span", {class: "tools"}, saveButton("CSV", "ranking", () => this.csv()))),
      this.found, box);
    box.addEventListener("click", (event) => {
      const button = event.target.closest("button.name");
      if (button) this.open(Number(button.dataset.place), true);
    });
    this.show();
  }

  rowOf(p) {
    let row = this.rows.get(p);
    if (row) return row;
    row = el("tr", {class: isBelow(p.log10_fdr, BEYOND_CHANCE) ? null : "faint"}, RANKING_COLUMNS.map(([, , , cell, optional], i) => i === 1
      ? el("th", {scope: "row"}, el("button", {type: "button", class: "name", "data-place": p.place}, said(nameOf(p))))
      : el("td", {class: optional ? "number optional" : "number"}, cell(p))));
    this.rows.set(p, row);
    return row;
  }

  chosen() {
    const [, key] = RANKING_COLUMNS[this.sorted.column];
    const fits = (p) => (this.text === "" || p.name.toLowerCase().includes(this.text) || (p.label || "").toLowerCase().includes(this.text)) &&
      (this.kind === "all" || p.scale === (this.kind === "scale")) && (!this.only || isBelow(p.log10_fdr, BEYOND_CHANCE));
    const before = (a, b) => (a < b ? -1 : a > b ? 1 : 0);
    return this.predictors.filter(fits).sort((a, b) => this.sorted.direction * before(key(a), key(b)) || a.rank - b.rank);
  }

  // The first rows at once, the others when there is time.
  show() {
    const shown = this.chosen();
    this.shown = shown;
    this.found.textContent = `${plural(shown.length, "predictor", "predictors")} of ${count(this.predictors.length)}`;
    this.body.replaceChildren(...shown.slice(0, RankingTable.FIRST).map((p) => this.rowOf(p)));
    const turn = (this.turn = {});
    const more = (from) => {
      if (this.turn !== turn || from >= shown.length) return;
      this.body.append(...shown.slice(from, from + RankingTable.MORE).map((p) => this.rowOf(p)));
      setTimeout(() => more(from + RankingTable.MORE));
    };
    setTimeout(() => more(RankingTable.FIRST));
  }

  sortBy(column) {
    const direction = this.sorted.column === column ? -this.sorted.direction : RANKING_COLUMNS[column][2];
    this.heads[this.sorted.column].setAttribute("aria-sort", "none");
    this.sorted = {column, direction};
    this.heads[column].setAttribute("aria-sort", direction > 0 ? "ascending" : "descending");
    this.show();
  }

  mark(p) {
    this.body.querySelector("tr.current")?.classList.remove("current");
    this.rowOf(p).classList.add("current");
  }

  csv() {
    const keys = ["rank", "name", "label", "scale", "selected", "test", "statistic", "df1", "df2", "log10_p", "log10_fdr", "log10_holm",
      "effect", "size", "low", "high", "bits", "missing"];
    return csvText([keys, ...this.shown.map((p) => keys.map((key) => p[key]))]);
  }
}
RankingTable.FIRST = 150;
RankingTable.MORE = 1000;

// The names of the best ones beside their dots, as far as they cover no other dot and no other name.
function strengthLabels(known, placeOf, [left, right]) {
  const taken = known.slice(0, 400).map((p) => placeOf(p)).map(([x, y]) => [x - 5, y - 5, x + 5, y + 5]);
  const isFree = ([x0, y0, x1, y1]) => x0 >= left && x1 <= right && y0 >= 0 &&
    taken.every(([a0, b0, a1, b1]) => x1 <= a0 || x0 >= a1 || y1 <= b0 || y0 >= b1);
  return known.slice(0, 12).flatMap((p) => {
    const [x, y] = placeOf(p), text = fitting(nameOf(p), 150), width = textWidth(text);
    const places = [[x - 8 - width, y], [x + 8, y], [x - width / 2, y - 14], [x - width / 2, y + 15], [x - 8 - width, y - 11], [x + 8, y - 11]];
    const place = places.find(([at, middle]) => isFree([at, middle - 6, at + width, middle + 6]));
    if (place === undefined) return [];
    taken.push([place[0], place[1] - 6, place[0] + width, place[1] + 6]);
    return [draw("text", {class: "soft name", x: place[0], y: place[1] + 4}, text)];
  });
}

// Strength against certainty: every predictor a dot.
function strengthFigure(predictors, open) {
  const known = predictors.filter((p) => p.size !== null && p.log10_p !== null);
  if (known.length === 0) return null;
  const finite = known.map((p) => zeros(p.log10_p)).filter(Number.isFinite);
  const top = Math.max(2, ...finite) * 1.05;
  const kinds = [...new Set(known.map((p) => p.effect))];
  const ends = known.flatMap((p) => [Math.abs(p.size), ...(known.length <= 60 && p.high !== null ? [Math.abs(p.high), Math.abs(p.low)] : [])]);
  const [svg, sx, sy] = frame({x: [0, Math.max(0.1, ...ends)], y: [0, top], height: 340, xTitle: "Strength: size of the effect", yTitle: "Certainty: −log₁₀ p"});
  const ordinary = (value) => Math.min(value, top);
  svg.append(draw("line", {class: "axis", x1: sx(0), x2: sx(sx.domain[1]), y1: sy(-BEYOND_CHANCE), y2: sy(-BEYOND_CHANCE), "stroke-dasharray": "6 4"}));
  for (const p of known.toReversed()) {
    const kind = classColor(kinds.indexOf(p.effect)), y = sy(ordinary(zeros(p.log10_p)));
    const sizes = p.low === null || known.length > 60 ? null : [p.low, p.high].map((v) => Math.sign(p.size || 1) * v).sort((a, b) => a - b);
    if (sizes) svg.append(draw("line", {class: `stroke ${kind}`, x1: sx(Math.max(0, sizes[0])), x2: sx(sizes[1]), y1: y, y2: y, opacity: 0.45}));
    svg.append(draw("circle", {class: `fill hit ${kind}`, cx: sx(Math.abs(p.size)), cy: y, r: known.length > 300 ? 3 : 5, opacity: 0.8, click: () => open(p.place, false)},
      draw("title", null, `${nameOf(p)}: ${p.effect} ${decimals(p.size)}, p ${pValue(p.log10_p)}`)));
  }
  svg.append(...strengthLabels(known, (p) => [sx(Math.abs(p.size)), sy(ordinary(zeros(p.log10_p)))], [sx(0), sx(sx.domain[1])]));
  return figure({title: "Strength against certainty", svg, above: legend(kinds.map((kind) => `${kind}: ${SIZES[kind] || kind}`)),
    description: `Each dot is a predictor${known.length <= 60 ? ", with the 95% interval of its effect" : ""}; choose one to look into it. Above the dashed line a p-value alone is below .05. Effects of different kinds are not on one scale.`,
    table: [["Predictor", "Effect", "Size", "Lower 95%", "Upper 95%", "log10 p"], known.map((p) => [nameOf(p), p.effect, p.size, p.low, p.high, p.log10_p])]});
}

function targetFigure(target) {
  if (target.scale || target.counts.length === 0) return null;
  const total = sum(target.counts);
  const classes = classTexts(target);
  const svg = rowsChart({rows: target.counts.map((value, k) => [value, k]), labels: classes, domain: [0, Math.max(...target.counts) / total],
    xText: wholePercent, xTitle: "Share of the used cases", numbers: ([value]) => count(value),
    mark: ([value, k], y, sx, height) => [draw("rect", {class: `fill ${classColor(k)}`, x: sx(0), y: y + 4, width: sx(value / total) - sx(0), height: height - 8})]});
  return figure({title: `The target: ${nameOf(target)}`, svg, table: [["Category", "Cases", "Share"], classes.map((text, k) => [text, target.counts[k], target.counts[k] / total])]});
}

function predictorFacts(p) {
  const interval = p.low === null ? "" : ` (95% interval ${decimals(p.low)} to ${decimals(p.high)})`;
  const df = p.df1 === null ? "" : ` with ${plain(p.df1)}${p.df2 === null ? "" : ` and ${plain(p.df2)}`} df`;
  return facts([
    ["Name", p.label ? said(p.name) : null],
    ["Rank", `${count(p.rank)}${p.selected ? ", selected" : ""}`],
    ["Test", p.test ? `${TESTS[p.test]}: ${p.test} ${tenths(p.statistic)}${df}` : "none"],
    ["p-value", `${pValue(p.log10_p)}; ${pValue(p.log10_fdr)} adjusted for false discoveries, ${pValue(p.log10_holm)} by Holm`],
    ["Effect", p.size === null ? "not computed" : `${SIZES[p.effect]} ${decimals(p.size)}${interval}`],
    ["Shared information", p.bits === null ? null : `${decimals(p.bits)} bits`],
    ["Missing", p.missing === null ? null : `${p.missing.toFixed(1)}% of the cases`],
    ["Caution", p.few_expected ? "too many cells expect few cases: the p-value is rough" : null]]);
}

function excludedSection(excluded) {
  if (excluded.length === 0) return null;
  const rows = excluded.map((p) => [nameOf(p), p.scale ? "number" : "categories", reasonText(p.reason, p.threshold)]);
  const headings = ["Predictor", "Kind", "Left out because"];
  return folded(`${plural(excluded.length, "predictor was", "predictors were")} left out before`, () => [
    el("p", {class: "tools"}, saveButton("CSV", "predictors left out", () => csvText([headings, ...rows]))),
    plainTable("Predictors left out", headings, rows)], excluded.length <= 12);
}

function rankingMeaning(findings) {
  const found = findings.predictors.filter((p) => isBelow(p.log10_fdr, BEYOND_CHANCE));
  if (findings.predictors.length === 0) return "No predictor is left to be ranked.";
  if (found.length === 0) return [`None of ${plural(findings.predictors.length, "predictor goes", "predictors goes")} with `, said(nameOf(findings.target)), " beyond chance (adjusted p below .05)."];
  return [`${count(found.length)} of ${plural(findings.predictors.length, "ranked predictor goes", "ranked predictors go")} with `, said(nameOf(findings.target)),
    " beyond chance (adjusted p below .05), most clearly ", said(nameOf(found[0])), ". Each was looked at alone: it takes a model to see what they are worth together."];
}

function rankingSection(findings) {
  findings.predictors.forEach((p, place) => { p.place = place; });
  const head = el("h3", {tabindex: "-1"});
  const content = el("div");
  const aside = el("section", {class: "panel beside", "aria-label": "One predictor"}, head, content);
  let table = null;
  const open = (place, byHand) => {
    const p = findings.predictors[place];
    const step = (by, text) => el("button", {type: "button", class: "small", disabled: !findings.predictors[place + by],
      click: () => open(place + by, true)}, text);
    head.replaceChildren(said(nameOf(p)));
    content.replaceChildren(el("div", {class: "controls"}, step(-1, "Previous"), step(1, "Next")), predictorFacts(p), ...drawnIn("panel", () => shapeFigures(p, findings.target)));
    table.mark(p);
    if (byHand) {
      head.focus({preventScroll: true});
      if (aside.getBoundingClientRect().top > innerHeight - 80) aside.scrollIntoView();
    }
  };
  table = new RankingTable(findings.predictors, open);
  if (findings.predictors.length > 0) open(0, false);
  return [
    el("p", null, rankingMeaning(findings)),
    facts([["Target", said(nameOf(findings.target))],
      ["Cases used", `${count(findings.cases.valid)}${findings.weight ? `, weight ${count(findings.cases.valid_weight)} by ${findings.weight}` : ""}`],
      ["Cases left out", count(findings.cases.excluded)],
      ["Predictors", `${count(findings.candidates)} candidates, ${count(findings.predictors.length)} ranked by ${findings.criterion}, ${count(findings.excluded.length)} left out`]]),
    el("div", {class: "several"}, targetFigure(findings.target), strengthFigure(findings.predictors, (place) => open(place, true))),
    findings.predictors.length === 0 ? null : [el("h3", null, "Predictors one by one"), el("div", {class: "two"}, el("div", null, table.element), aside)],
    excludedSection(findings.excluded)];
}
