// Tables as CSV, charts as SVG, into files of the reader's.

function save(name, type, text) {
  const link = el("a", {href: URL.createObjectURL(new Blob([text], {type})), download: name});
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

function csvText(rows) {
  const field = (value) => {
    if (value === null || value === undefined) return "";
    const text = String(value);
    return /[",\r\n]/.test(text) || text === "" ? `"${text.replaceAll('"', '""')}"` : text;
  };
  return rows.map((row) => row.map(field).join(",") + "\r\n").join("");
}

const fileName = (title, ending) =>
  `${title.replace(/[^\p{L}\p{N}]+/gu, "-").replace(/^-|-$/g, "").slice(0, 60) || "report"}.${ending}`;

// Styles stand in the page; a drawing of its own takes them along.
const STYLES = ["fill", "stroke", "stroke-width", "stroke-dasharray", "opacity", "font", "text-anchor"];

function svgText(svg) {
  const copy = svg.cloneNode(true);
  const [from, to] = [svg, copy].map((root) => [root, ...root.querySelectorAll("*")]);
  from.forEach((node, i) => {
    const style = getComputedStyle(node);
    for (const name of STYLES) to[i].style.setProperty(name, style.getPropertyValue(name));
  });
  copy.setAttribute("xmlns", "http://www.w3.org/2000/svg");
  const [, , width, height] = svg.getAttribute("viewBox").split(" ");
  copy.setAttribute("width", width);
  copy.setAttribute("height", height);
  copy.style.background = getComputedStyle(document.body).backgroundColor;
  return new XMLSerializer().serializeToString(copy);
}

function saveButton(kind, title, content) {
  return el("button", {type: "button", class: "small", "aria-label": `Download ${title} as ${kind}`,
    click: () => save(fileName(title, kind.toLowerCase()), kind === "SVG" ? "image/svg+xml" : "text/csv", content())}, kind);
}
