// A document for programs (--format json) as the page wants it: keys become what is shown for them, and
// cells find their rows and columns by their paths.

function tableOfDocument(table, shown) {
  const axis = {row: [], column: [], layer: []};
  const places = {row: new Map(), column: new Map(), layer: new Map()};
  const placeOf = (kind, keys) => {
    const id = JSON.stringify(keys);
    if (!places[kind].has(id)) {
      places[kind].set(id, axis[kind].length);
      axis[kind].push(keys.map(shown));
    }
    return places[kind].get(id);
  };
  const letter = (note) => String.fromCharCode(97 + (note % 26));
  const cells = table.cells.map((cell) => [placeOf("row", cell.row), placeOf("column", cell.column), placeOf("layer", cell.layer),
    typeof cell.value === "number" ? cell.value : null, cell.text, ...(cell.notes.length > 0 ? [` [${cell.notes.map(letter).join(",")}]`] : [])]);
  const names = (kind) => table.dimensions[kind].map(shown);
  return {title: shown(table.title), subtype: table.subtype, caption: table.caption === null ? null : shown(table.caption),
    row_names: names("rows"), column_names: names("columns"), layer_names: names("layers"),
    rows: axis.row, columns: axis.column, layers: axis.layer.length > 0 ? axis.layer : [[]], cells,
    footnotes: table.footnotes.map((text, note) => [letter(note), text])};
}

// Commands that have more to show than a document without findings holds.
const SHOWN_BY_FINDINGS = ["SELECTPRED", "NAIVEBAYES", "rank", "model", "describe", "score", "inspect"];

function payloadOfDocument(report, heading) {
  const shown = (key) => (Object.hasOwn(report.strings || {}, key) ? report.strings[key] : key);
  const data = report.data || {};
  return {version: report.predselect, heading, cases: data.cases || 0, variables: data.variables || 0,
    runs: report.runs.map((run) => ({command: run.command, completed: run.completed, files: run.files || [], findings: run.findings ?? null,
      isPoor: run.completed === true && !run.findings && SHOWN_BY_FINDINGS.includes(run.command),
      messages: (run.messages || []).map((m) => ({severity: m.severity, text: m.text, detail: m.detail || ""})),
      notes: (run.notes || []).map((n) => ({group: n.group === null ? "" : shown(n.group), title: shown(n.title), text: shown(n.text)})),
      tables: (run.tables || []).map((table) => tableOfDocument(table, shown)),
      charts: (run.charts || []).map((chart) => ({title: shown(chart.title), spec: chart.spec})),
      new_variables: (run.new_variables || []).map((v) => [v.name, v.label])}))};
}
