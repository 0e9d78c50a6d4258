// The pivot tables of a run, as they would be printed, each cell a text to be copied.

// Headings of one axis, level by level, merged where they are equal from the outermost on. The last one
// of an entry is as deep as the levels that are left.
function mergedHeadings(entries, depth) {
  const levels = [];
  for (let level = 0; level < depth; ++level) {
    const spans = [];
    entries.forEach((entry, i) => {
      const text = entry[level] ?? "";
      const same = i > 0 && entries[i - 1].slice(0, level + 1).every((t, j) => t === entry[j]) && level < entry.length - 1;
      if (same) ++spans.at(-1).length;
      else if (level < Math.max(1, entry.length)) spans.push({text, length: 1, at: i, deep: level >= entry.length - 1 ? depth - level : 1});
    });
    levels.push(spans);
  }
  return levels;
}

const depthOf = (entries) => Math.max(0, ...entries.map((entry) => entry.length));

function pivotTable(table, layer) {
  const cells = table.cells.filter((cell) => cell[2] === layer);
  const byRow = new Map();
  for (const cell of cells) {
    if (!byRow.has(cell[0])) byRow.set(cell[0], []);
    byRow.get(cell[0])[cell[1]] = cell;
  }
  const rowDepth = Math.max(1, depthOf(table.rows)), columnDepth = Math.max(1, depthOf(table.columns));
  const head = mergedHeadings(table.columns, columnDepth).map((spans, level) => el("tr", null,
    level === 0 ? el("th", {colspan: rowDepth, rowspan: columnDepth, scope: "col"}, table.row_names.join(", ")) : null,
    spans.map((span) => el("th", {colspan: span.length, rowspan: span.deep, scope: span.length > 1 ? "colgroup" : "col", class: span.length > 1 ? "group" : "number"}, said(span.text)))));
  const starts = mergedHeadings(table.rows, rowDepth).map((spans) => new Map(spans.map((span) => [span.at, span])));
  const body = table.rows.map((row, i) => el("tr", null,
    starts.map((level) => level.has(i) ? el("th", {rowspan: level.get(i).length, colspan: level.get(i).deep, scope: level.get(i).length > 1 ? "rowgroup" : "row"}, said(level.get(i).text)) : null),
    table.columns.map((_, j) => {
      const cell = (byRow.get(i) || [])[j];
      if (cell === undefined) return el("td", null);
      return el("td", {class: cell[3] === null ? "text" : "number"}, said(cell[4]), cell[5] ? el("sup", null, cell[5]) : null);
    })));
  return el("table", null, el("thead", null, head), el("tbody", null, body));
}

function tableCsv(table) {
  const layered = table.layers.length > 1;
  const headings = [...(layered ? [table.layer_names.join(", ") || "Layer"] : []), table.row_names.join(", ") || "Row",
    ...table.columns.map((column) => column.filter(Boolean).join(": "))];
  const rows = table.layers.flatMap((layer, l) => table.rows.map((row, i) => {
    const values = table.columns.map(() => null);
    for (const cell of table.cells) {
      if (cell[0] === i && cell[2] === l) values[cell[1]] = cell[3] ?? cell[4];
    }
    return [...(layered ? [layer.join(": ")] : []), row.filter(Boolean).join(": "), ...values];
  }));
  return csvText([headings, ...rows]);
}

function tableSection(table) {
  return el("section", null,
    el("div", {class: "caption"}, el("h3", null, said(table.title)), el("span", {class: "tools"}, saveButton("CSV", table.title, () => tableCsv(table)))),
    table.layers.map((layer, l) => [
      layer.length > 0 ? el("p", {class: "soft"}, said(layer.join(", "))) : null,
      el("div", {class: "scroll tall", tabindex: "0", role: "group", "aria-label": [table.title, ...layer].join(", ")}, pivotTable(table, l))]),
    table.footnotes.length > 0 ? el("p", {class: "soft"}, table.footnotes.map(([letter, text]) => [`[${letter}] `, said(text), el("br")])) : null,
    table.caption ? el("p", {class: "soft"}, table.caption.split("\n").map((line) => [said(line), el("br")])) : null);
}
