// The model at work in the page: probabilities of the classes for values that the reader sets.

// The category of a number: how many cut points are below it. Without any, as the engine does it, the
// sign decides. -1 is missing.
function binOf(input, value) {
  const missing = input.user_missing;
  if (value === null || !Number.isFinite(value)) return -1;
  if (missing && (missing.values.includes(value) || (missing.range && missing.range[0] <= value && value <= missing.range[1]))) return -1;
  if (input.cuts.length === 0) return value >= 0 ? 1 : 0;
  return input.cuts.reduce((n, cut) => n + (cut < value ? 1 : 0), 0);
}

// Priors times factors, divided by their sum; exponents apart, so that nothing underflows.
function posterior(model, codes) {
  const logs = model.target.priors.map((prior, k) => Math.log(prior) + sum(model.inputs.map((input, j) => codes[j] < 0 ? 0 : Math.log(input.factors[codes[j]][k]))));
  const most = Math.max(...logs);
  const joint = logs.map((value) => Math.exp(value - most));
  const total = sum(joint);
  return joint.map((value) => value / total);
}

// How much a category speaks for a class, against all others together: the logarithm of the ratio of its
// probabilities.
function evidence(model, factors, k) {
  const priors = model.target.priors;
  const others = sum(priors.map((prior, j) => (j === k ? 0 : prior)));
  const average = sum(priors.map((prior, j) => (j === k ? 0 : prior * factors[j]))) / others;
  return Math.log(factors[k] / average);
}

const binText = (input, m) => {
  const [from, to] = [m === 0 ? null : input.cuts[m - 1], m < input.cuts.length ? input.cuts[m] : null];
  const known = (cut) => cut !== null && Math.abs(cut) < 1e308;
  if (!known(from)) return known(to) ? `up to ${plain(to)}` : "all values";
  return known(to) ? `${plain(from)} to ${plain(to)}` : `above ${plain(from)}`;
};

const rowTexts = (input) => (input.scale ? input.counts.map((_, m) => binText(input, m)) : input.categories);

const heaviest = (input) => input.counts.map(sum).reduce((best, weight, m, all) => (weight > all[best] ? m : best), 0);

class WhatIf {
  constructor(model) {
    this.model = model;
    this.result = el("div", {role: "status", "aria-live": "polite"});
    this.fields = model.inputs.map((input) => this.field(input));
    this.element = el("div", {class: "panel"},
      el("p", {class: "soft"}, "Set what is known of a case. What is not set counts as missing and says nothing."),
      el("div", {class: "controls"},
        el("button", {type: "button", click: () => this.set((input) => (input.scale ? this.middle(input) : heaviest(input)))}, "The most common values"),
        el("button", {type: "button", click: () => this.set(() => "")}, "Nothing known")),
      el("div", {class: "inputs"}, this.fields.map((field) => field.element)), this.result);
    this.show();
  }

  middle(input) {
    const m = heaviest(input), [low, high] = [m === 0 ? input.low : input.cuts[m - 1], m < input.cuts.length ? input.cuts[m] : input.high];
    return (Math.max(low, input.low) + Math.min(high, input.high)) / 2;
  }

  field(input) {
    const id = newId();
    const control = input.scale
      ? el("input", {type: "number", step: "any", id, input: () => this.show()})
      : el("select", {id, change: () => this.show()}, el("option", {value: ""}, "(not known)"),
        input.categories.map((text, m) => el("option", {value: m}, text)));
    const hint = input.scale ? el("span", {class: "hint"}, `${plain(input.low)} to ${plain(input.high)} in training`) : null;
    return {control, code: () => control.value === "" ? -1 : input.scale ? binOf(input, Number(control.value)) : Number(control.value),
      element: el("div", null, el("label", {for: id}, said(nameOf(input))), control, hint)};
  }

  set(valueOf) {
    this.model.inputs.forEach((input, j) => { this.fields[j].control.value = valueOf(input); });
    this.show();
  }

  show() {
    const {target, inputs} = this.model;
    const codes = this.fields.map((field) => field.code());
    const shares = posterior(this.model, codes);
    const best = shares.indexOf(Math.max(...shares));
    const order = shares.map((_, k) => k).sort((a, b) => shares[b] - shares[a]).slice(0, 12);
    const pushes = inputs.map((input, j) => codes[j] < 0 ? null : [nameOf(input), rowTexts(input)[codes[j]], evidence(this.model, input.factors[codes[j]], best)])
      .filter(Boolean).sort((a, b) => Math.abs(b[2]) - Math.abs(a[2]));
    const bars = order.map((k) => {
      const bar = el("span", {class: `bar ink ${classColor(k)}`});
      bar.style.width = `${shares[k] * 100}%`;
      return el("tr", {"data-class": k, "data-probability": shares[k]}, el("th", {scope: "row"}, said(target.categories[k])),
        el("td", {class: "number"}, percent(shares[k])), el("td", null, el("span", {class: "track"}, bar)));
    });
    this.result.replaceChildren(el("h4", null, "Probabilities"), el("table", null, el("tbody", null, bars)),
      pushes.length === 0 ? el("p", {class: "soft"}, "With nothing known these are the shares of the classes in training.")
        : el("div", null, el("h4", null, "What speaks for ", said(target.categories[best]), " (above 0), and against it"),
          plainTable("Weight of evidence", ["Predictor", "Value", "Weight of evidence"], pushes)));
  }
}
