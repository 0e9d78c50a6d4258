// Elements. Whatever the data say goes in as text: nothing here takes markup.

function furnish(node, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false || (typeof value === "number" && !Number.isFinite(value))) continue;
    if (typeof value === "function") node.addEventListener(name, value);
    else node.setAttribute(name, value === true ? "" : value);
  }
  for (const child of children.flat(Infinity)) {
    if (child === null || child === undefined || child === false) continue;
    node.append(child instanceof Node ? child : String(child));
  }
  return node;
}

// el("p", {class: "soft", click: f}, "text", child, [children])
const el = (tag, attributes, ...children) =>
  furnish(document.createElement(tag), attributes || {}, children);

const draw = (tag, attributes, ...children) =>
  furnish(document.createElementNS("http://www.w3.org/2000/svg", tag), attributes || {}, children);

// A text of the data: it cannot turn the direction of what stands around it.
const said = (text) => el("bdi", null, text);

const nameOf = (variable) => variable.label || variable.name;

let lastId = 0;
const newId = () => `id${++lastId}`;

const classColor = (k) => `k${k % 12}`;

function facts(pairs) {
  return el("dl", {class: "facts"}, pairs.filter(([, value]) => value !== null && value !== "")
    .map(([name, value]) => [el("dt", null, name), el("dd", null, value)]));
}

// What is made when the reader first opens it.
function folded(summary, make, open) {
  const details = el("details", null, el("summary", null, summary));
  const fill = () => {
    if (details.open && details.childElementCount === 1) furnish(details, {}, [make()]);
  };
  details.addEventListener("toggle", fill);
  details.open = Boolean(open);
  fill();
  return details;
}

function choice(label, options, onChange, chosen) {
  const id = newId();
  const select = el("select", {id, change: () => onChange(select.value)},
    options.map(([value, text]) => el("option", {value, selected: String(value) === String(chosen)}, text)));
  return el("span", null, el("label", {for: id}, label, " "), select);
}

function legend(texts) {
  return el("ul", {class: "legend"}, texts.map((text, k) =>
    el("li", {class: classColor(k)}, el("span", {class: "dot ink"}), said(text))));
}
