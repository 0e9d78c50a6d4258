// The page: one part a command, in the order of their running.

const COMMANDS = {rank: "Ranking", model: "Model", describe: "Description of the data", inspect: "Saved state", score: "Predictions", evaluate: "Evaluation"};

const commandTitle = (run) => COMMANDS[run.command] || run.command || "Results";

function chartSection(chart) {
  const all = chart.spec.data?.values?.length ?? 0;
  const limited = (chart.spec.transform || []).length > 0;
  const place = el("div", {class: "drawn"});
  const rows = chart.spec.data?.values ?? [];
  let view = null;
  const show = async (whole) => {
    const spec = structuredClone(chart.spec);
    if (whole) delete spec.transform;
    if (window.vegaEmbed === undefined) {
      place.replaceChildren(el("p", {class: "notice"}, "This build of the program has no renderer of charts; the numbers stand below."));
      return;
    }
    view = (await window.vegaEmbed(place, spec, {ast: true, renderer: "svg", actions: false, tooltip: false, defaultStyle: false})).view;
    const drawing = place.querySelector("svg");
    drawing.setAttribute("role", "img");
    drawing.setAttribute("aria-label", chart.title);
  };
  const first = limited && all > 30 ? el("button", {type: "button", click: () => { show(true); first.remove(); }}, `Draw all ${count(all)}`) : null;
  const headings = Object.keys(rows[0] ?? {});
  const numbers = [headings, rows.map((row) => headings.map((key) => row[key]))];
  show(false);
  return el("figure", null, el("figcaption", null, el("h3", null, said(chart.title)), el("span", {class: "tools"},
    el("button", {type: "button", class: "small", "aria-label": `Download ${chart.title} as SVG`,
      click: async () => view && save(fileName(chart.title, "svg"), "image/svg+xml", await view.toSVG())}, "SVG"), " ",
    saveButton("CSV", chart.title, () => csvText([numbers[0], ...numbers[1]])), " ", first)),
  place, folded("Numbers", () => plainTable(chart.title, ...numbers)));
}

function findingsSection(findings) {
  if (findings === null) return null;
  const sections = {ranking: rankingSection, model: modelSection, predictions: predictionsSection, evaluation: evaluationSection, description: descriptionSection};
  return Object.hasOwn(sections, findings.kind) ? sections[findings.kind](findings) : null;
}

function tablesSection(run) {
  if (run.tables.length === 0) return null;
  const all = () => run.tables.map((table) => whole(() => tableSection(table)));
  return run.findings === null ? all()
    : folded(`Tables of the command (${run.tables.length})`, all, ["predictions", "evaluation"].includes(run.findings.kind));
}

function notesSection(run) {
  const notes = run.notes.map((note) => [note.group ? `${note.group}: ${note.title}` : note.title, said(note.text)]);
  const added = run.new_variables.map(([name, label]) => [said(name), said(label)]);
  const files = run.files.filter(Boolean).map((file) => ["File written", said(file)]);
  if (notes.length + added.length + files.length === 0) return null;
  return el("details", null, el("summary", null, "How it was made, and what was written"), facts([...notes, ...added, ...files]));
}

// What is damaged in a document leaves the rest to be seen.
function whole(make) {
  try {
    return make();
  } catch (error) {
    return el("p", {class: "notice error"}, "This part of the document is damaged, and cannot be shown. ", String(error));
  }
}

function runSection(run, id) {
  return el("section", {id}, el("h2", null, commandTitle(run)),
    run.completed ? null : el("p", {class: "notice error"}, "The command did not come to its end."),
    run.messages.map((message) => el("div", {class: `notice ${message.severity}`},
      el("strong", null, message.severity === "error" ? "Error: " : message.severity === "warning" ? "Warning: " : "Note: "), said(message.text),
      message.detail ? el("pre", {class: "detail", tabindex: "0"}, message.detail) : null)),
    run.isPoor ? el("p", {class: "notice"}, "This document holds the tables of the command alone. For its drawings run the command with --format html, or save a state (--save-state) and open that with predselect view.") : null,
    whole(() => findingsSection(run.findings)), whole(() => run.charts.map(chartSection)), whole(() => tablesSection(run)), whole(() => notesSection(run)));
}

function themeButton() {
  const root = document.documentElement;
  const set = (theme) => root.setAttribute("data-theme", theme);
  set(matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light");
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", (event) => set(event.matches ? "dark" : "light"));
  addEventListener("beforeprint", () => { root.dataset.before = root.dataset.theme; set("light"); });
  addEventListener("afterprint", () => set(root.dataset.before));
  return el("button", {type: "button", class: "theme", click: () => set(root.dataset.theme === "dark" ? "light" : "dark")}, "Light or dark");
}

// A damaged document becomes a page that says so.
function payloadOf(sent) {
  try {
    return sent.document ? payloadOfDocument(sent.document, sent.heading) : sent;
  } catch (error) {
    return {version: "", heading: sent.heading, cases: 0, runs: [{command: "Damaged document", completed: true, findings: null, charts: [], tables: [], notes: [],
      new_variables: [], files: [], messages: [{severity: "error", text: "The document is damaged, and cannot be shown.", detail: String(error)}]}]};
  }
}

function showPage() {
  const payload = payloadOf(JSON.parse(document.getElementById("payload").textContent));
  const ids = payload.runs.map((_, i) => `part${i + 1}`);
  const about = [`PredSelect ${payload.version}`];
  if (payload.cases > 0) about.push(`${count(payload.cases)} cases, ${count(payload.variables)} variables`);
  const parts = payload.runs.map((run, i) => whole(() => runSection(run, ids[i])));
  document.body.append(
    el("header", null, el("div", {class: "top"}, el("h1", null, said(payload.heading)), themeButton()), el("p", {class: "soft"}, about.join(" · "))),
    parts.length > 1 ? el("nav", {"aria-label": "Parts"}, el("ul", null, payload.runs.map((run, i) => el("li", null, el("a", {href: `#${ids[i]}`}, `${i + 1}. ${commandTitle(run)}`))))) : "",
    el("main", {id: "main", tabindex: "-1"}, parts));
  document.documentElement.dataset.ready = "yes";
}

showPage();
