// Numbers as an analyst reads them. Nothing is null, and shows as a dash.

const DASH = "–";

function count(value) {
  if (value === null || value === undefined) return DASH;
  return value.toLocaleString("en-US", {maximumFractionDigits: Number.isInteger(value) ? 0 : 2});
}

const percent = (share) =>
  share === null || !Number.isFinite(share) ? DASH : `${(100 * share).toFixed(1)}%`;

const wholePercent = (share) => `${Math.round(100 * share)}%`;

// Four digits, and an exponent only where there is no other way.
function plain(value, digits = 4) {
  if (value === null || value === undefined || !Number.isFinite(value)) return DASH;
  if (value === 0) return "0";
  const size = Math.abs(value);
  if (size >= 1e7 || size < 1e-4) return value.toExponential(2).replace("e+", "e");
  if (size >= 10 ** digits) return Math.round(value).toString();
  return String(Number(value.toPrecision(digits)));
}

const tenths = (value) => (value === null ? DASH : Math.abs(value) >= 1e7 ? plain(value) : value.toFixed(1));

// Of numbers that cannot be above one.
function decimals(value) {
  return value === null ? DASH : value.toFixed(3).replace(/^(-?)0\./, "$1.");
}

// A p-value, from its logarithm to base 10.
function pValue(log10) {
  if (log10 === null) return DASH;
  if (log10 === "-inf") return "0";
  if (log10 > -3) return decimals(10 ** log10);
  const exponent = Math.floor(log10);
  const digits = 10 ** (log10 - exponent);
  const shown = digits.toFixed(1);
  return shown === "10.0" ? `1.0e${exponent + 1}` : `${shown}e${exponent}`;
}

// How many zeros a p-value has behind the point; Infinity for a p-value of zero.
const zeros = (log10) => (log10 === "-inf" ? Infinity : log10 === null ? null : Math.max(0, -log10));

const plural = (n, one, more) => `${count(n)} ${n === 1 ? one : more}`;
