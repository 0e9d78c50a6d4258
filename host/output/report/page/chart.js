// Drawings: a figure with its title, what it shows in words, and its numbers; scales and axes.

// Where drawings stand: on the "page", "small" beside others, or in the "panel" beside the ranking, which a
// wide screen makes narrow.
let room = "page";

function chartWidth() {
  const screen = document.documentElement.clientWidth;
  const beside = room === "panel" && screen >= 1000;
  const left = beside ? (Math.min(1320, screen) - 56) * 0.38 - 34 : screen - (room === "panel" ? 60 : 32);
  return Math.max(260, Math.min(room === "small" ? 420 : 620, Math.floor(left)));
}

function drawnIn(place, make) {
  const before = room;
  room = place;
  try {
    return make();
  } finally {
    room = before;
  }
}

// As texts of drawings are set (page.css).
const measuring = document.createElement("canvas").getContext("2d");
measuring.font = '12px system-ui, -apple-system, "Segoe UI", Roboto, Arial, sans-serif';
const textWidth = (text) => measuring.measureText(text).width;

// The text, or so much of its start as is not wider.
function fitting(text, width) {
  if (textWidth(text) <= width) return text;
  const letters = [...text].slice(0, 200);
  let [fits, beyond] = [0, letters.length];
  while (beyond - fits > 1) {
    const middle = (fits + beyond) >> 1;
    if (textWidth(`${letters.slice(0, middle).join("")}…`) <= width) fits = middle;
    else beyond = middle;
  }
  return `${letters.slice(0, fits).join("")}…`;
}

// Of counts.
const wholeAxisText = (value) => (Number.isInteger(value) ? axisText(value) : "");

const axisText = (value) => (Math.abs(value) >= 1e4 && Math.abs(value) < 1e7 ? count(value) : plain(value));

// `table` is [headings, rows]: the numbers behind the drawing.
function figure({title, description, svg, table, above}) {
  const ids = [newId(), newId()];
  svg.setAttribute("role", "img");
  svg.setAttribute("aria-labelledby", ids.join(" "));
  svg.prepend(draw("title", {id: ids[0]}, title), draw("desc", {id: ids[1]}, description || ""));
  const numbers = table === undefined ? null : folded("Numbers", () => plainTable(title, ...table));
  return el("figure", null,
    el("figcaption", null, el("h3", null, said(title)), el("span", {class: "tools"},
      saveButton("SVG", title, () => svgText(svg)), " ",
      table === undefined ? null : saveButton("CSV", title, () => csvText([table[0], ...table[1]])))),
    description ? el("p", {class: "soft"}, description) : null, above || null, svg, numbers);
}

const shownValue = (value) => (typeof value === "number" ? plain(value, 6) : said(value ?? DASH));

function plainTable(title, headings, rows) {
  const body = rows.map((row) => el("tr", null, row.map((value, i) => i === 0
    ? el("th", {scope: "row"}, shownValue(value))
    : el("td", {class: typeof value === "number" ? "number" : null}, shownValue(value)))));
  return el("div", {class: "scroll tall", tabindex: "0", role: "group", "aria-label": `${title}: numbers`},
    el("table", null, el("thead", null, el("tr", null, headings.map((h) => el("th", {scope: "col"}, said(h))))),
      el("tbody", null, body)));
}

const canvas = (width, height, ...children) =>
  draw("svg", {viewBox: `0 0 ${width} ${height}`, width, height}, ...children);

function linear([d0, d1], [r0, r1]) {
  const span = d1 - d0 || 1;
  const scale = (value) => r0 + ((value - d0) / span) * (r1 - r0);
  scale.domain = [d0, d1];
  return scale;
}

function ticks([low, high], wanted = 5) {
  const span = high - low;
  if (!(span > 0) || !Number.isFinite(span)) return [low];
  const power = 10 ** Math.floor(Math.log10(span / wanted));
  const step = [1, 2, 5, 10].map((s) => s * power).find((s) => span / s <= wanted) || power;
  const found = [];
  const first = Math.ceil(low / step - 1e-9);
  // Beside numbers of 16 digits a step may be nothing: it is the number of ticks that ends.
  for (let n = 0; n <= 2 * wanted && (first + n) * step <= high + step * 1e-9; ++n) {
    found.push(Number(((first + n) * step).toPrecision(12)));
  }
  return found;
}

// The frame of a drawing with two scales: [svg, x, y].
function frame({width = chartWidth(), height = 300, x, y, xTitle, yTitle, xText = axisText, yText = axisText}) {
  const [top, bottom, right] = [12, xTitle ? 46 : 26, 18];
  const left = 30 + Math.max(...ticks(y).map((t) => textWidth(yText(t))));
  const sx = linear(x, [left, width - right]), sy = linear(y, [height - bottom, top]);
  const svg = canvas(width, height);
  for (const t of ticks(x, width < 420 ? 4 : 6)) {
    svg.append(draw("line", {class: "grid", x1: sx(t), x2: sx(t), y1: top, y2: height - bottom}),
      draw("text", {class: "soft", x: sx(t), y: height - bottom + 16, "text-anchor": "middle"}, xText(t)));
  }
  for (const t of ticks(y)) {
    svg.append(draw("line", {class: "grid", x1: left, x2: width - right, y1: sy(t), y2: sy(t)}),
      draw("text", {class: "soft", x: left - 6, y: sy(t) + 4, "text-anchor": "end"}, yText(t)));
  }
  svg.append(draw("line", {class: "axis", x1: left, x2: width - right, y1: height - bottom, y2: height - bottom}),
    draw("text", {x: (left + width - right) / 2, y: height - 8, "text-anchor": "middle"}, fitting(xTitle, width - left)),
    draw("text", {x: 14, y: (height - bottom) / 2, "text-anchor": "middle",
      transform: `rotate(-90 14 ${(height - bottom) / 2})`}, fitting(yTitle, height - bottom)));
  return [svg, sx, sy];
}

const path = (points, sx, sy) => points.map(([x, y], i) => `${i ? "L" : "M"}${sx(x).toFixed(1)} ${sy(y).toFixed(1)}`).join("");

// Horizontal rows, each with its label: `mark(row, y, sx)` gives what is drawn in it.
function rowsChart({rows, labels, domain, xTitle, mark, xText = axisText, rowHeight = 24, numbers}) {
  const width = chartWidth();
  const left = Math.min(width * 0.38, 12 + Math.max(...labels.map((label) => textWidth(label)), 24));
  const right = numbers ? 16 + Math.max(...rows.map((row) => textWidth(numbers(row)))) : 18;
  const height = rows.length * rowHeight + 46;
  const sx = linear(domain, [left, width - right]);
  const svg = canvas(width, height);
  for (const t of ticks(domain, width < 420 ? 3 : 5)) {
    svg.append(draw("line", {class: "grid", x1: sx(t), x2: sx(t), y1: 4, y2: height - 42}),
      draw("text", {class: "soft", x: sx(t), y: height - 26, "text-anchor": "middle"}, xText(t)));
  }
  rows.forEach((row, i) => {
    const y = 4 + i * rowHeight;
    svg.append(draw("text", {x: left - 6, y: y + rowHeight / 2 + 4, "text-anchor": "end"},
      draw("title", null, labels[i]), fitting(labels[i], left - 8)));
    svg.append(...mark(row, y, sx, rowHeight));
    if (numbers) svg.append(draw("text", {class: "soft", x: width - 4, y: y + rowHeight / 2 + 4, "text-anchor": "end"}, numbers(row)));
  });
  svg.append(draw("text", {x: (left + width - right) / 2, y: height - 6, "text-anchor": "middle"}, fitting(xTitle, width - 8)));
  return svg;
}
