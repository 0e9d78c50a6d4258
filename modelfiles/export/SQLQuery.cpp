// The model as one query. Each new column is a subquery without a table of its own, over the row at
// hand: its values as numbers, the rows of the predictors' tables that they stand for, the sums of
// evidence, the largest of these; and of isotonic curves the posteriors, what the curves make of
// them, their shares, the largest of these. The limits keep a database from folding these steps
// into one, which would compute each of them as often as the next one needs it.
#include <limits>

#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ModelFormats.h"
#include "modelfiles/export/SQLText.h"
#include "modelfiles/export/ScoringModel.h"

namespace MCModelFiles {

namespace {

// Beyond it a probability counts as 0; databases refuse exponentials that do not fit a double.
constexpr double kNegligible = -700;

constexpr std::size_t kShortName = 63;

// "prefix1", "prefix2", ...
std::string Nth(const char* prefix, std::size_t i) { return prefix + std::to_string(i + 1); }

std::string List(const std::vector<std::string>& items, const char* separator) {
  std::string list;
  for (const std::string& item : items) list += (list.empty() ? "" : separator) + item;
  return list;
}

// A step: what is selected from the step before.
std::string Step(const std::vector<std::string>& columns, const std::string& from) {
  return "SELECT " + List(columns, ",\n      ") + (from.empty() ? "" : "\n    FROM (" + from) +
         (from.empty() ? "" : ") AS step") + "\n    LIMIT 1";
}

std::string ValueOf(const ScoringInput& input) {
  const std::string column = "t." + SQLName(input.fName);
  return input.fbTexts ? column : "CAST(" + column + " AS DOUBLE PRECISION)";
}

// When a number has no row.
std::string MissingIn(const ScoringInput& input, const std::string& v) {
  const std::string highest = SQLReal(std::numeric_limits<double>::max());
  std::string test = v + " IS NULL OR " + v + " <= -" + highest + " OR " + v + " > " + highest;
  for (const double value : input.fMissing) test += " OR " + v + " = " + SQLExact(value);
  if (input.fMissingRange) {
    test += " OR " + v + " BETWEEN " + SQLExact(input.fMissingRange->first) + " AND " +
            SQLExact(input.fMissingRange->second);
  }
  return test;
}

std::string RowOf(const ScoringInput& input, const std::string& v) {
  std::string row = "CASE";
  if (input.fbBinned) {
    row += " WHEN " + MissingIn(input, v) + " THEN -1";
    for (std::size_t i = 0; i < input.fCuts.size(); ++i) {
      row +=
          "\n        WHEN " + v + " <= " + SQLExact(input.fCuts[i]) + " THEN " + std::to_string(i);
    }
    return row + "\n        ELSE " + std::to_string(input.fCuts.size()) + " END";
  }
  for (std::size_t i = 0; i < input.GetNCategories(); ++i) {
    const std::string value =
        input.fbTexts ? SQLText(input.fTexts[i]) : SQLExact(input.fNumbers[i]);
    row += "\n        WHEN " + v + " = " + value + " THEN " + std::to_string(i);
  }
  return row + "\n        ELSE -1 END";
}

std::string EvidenceFor(std::size_t k, const ScoringModel& model, const ScoringInput& prior,
                        const std::vector<std::vector<double>>& evidence) {
  const std::size_t classes = model.GetNClasses();
  std::vector<std::string> terms = {SQLReal(EvidenceOf(prior, classes)[k])};
  for (std::size_t j = 0; j < model.fInputs.size(); ++j) {
    std::string term = "CASE " + Nth("r", j);
    for (std::size_t row = 0; row < model.fInputs[j].GetNRows(); ++row) {
      term += " WHEN " + std::to_string(row) + " THEN " + SQLReal(evidence[j][row * classes + k]);
    }
    terms.push_back(term + " ELSE 0E0 END");
  }
  return SQLSum(terms);
}

std::string Largest(std::size_t classes) {
  std::string largest = "CASE";
  for (std::size_t k = 0; k + 1 < classes; ++k) {
    std::vector<std::string> tests;
    for (std::size_t i = k + 1; i < classes; ++i)
      tests.push_back(Nth("s", k) + " >= " + Nth("s", i));
    largest += " WHEN " + List(tests, " AND ") + " THEN " + Nth("s", k);
  }
  return classes == 1 ? "s1" : largest + " ELSE " + Nth("s", classes - 1) + " END";
}

std::vector<std::string> Names(const char* prefix, std::size_t n) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < n; ++i) names.push_back(Nth(prefix, i));
  return names;
}

// The columns s1, s2, ... of a step, and the largest one.
std::string WithLargest(std::size_t classes, const std::string& from) {
  std::vector<std::string> columns = Names("s", classes);
  columns.push_back(Largest(classes) + " AS largest");
  return Step(columns, from);
}

// The steps up to the evidence for each class, s1, s2, ..., and the largest one.
std::string Steps(const ScoringModel& model) {
  std::vector<std::string> values, rows, sums;
  std::vector<std::vector<double>> evidence;
  ScoringInput prior;
  prior.fNumbers = {0};
  prior.fFactors = model.fPriors;
  for (std::size_t j = 0; j < model.fInputs.size(); ++j) {
    const ScoringInput& input = model.fInputs[j];
    values.push_back(ValueOf(input) + " AS " + Nth("v", j));
    rows.push_back(RowOf(input, Nth("v", j)) + " AS " + Nth("r", j));
    evidence.push_back(EvidenceOf(input, model.GetNClasses()));
  }
  for (std::size_t k = 0; k < model.GetNClasses(); ++k) {
    sums.push_back(EvidenceFor(k, model, prior, evidence) + " AS " + Nth("s", k));
  }
  return WithLargest(model.GetNClasses(), Step(sums, Step(rows, Step(values, ""))));
}

std::string Share(std::size_t k, const NBCalibration& calibration) {
  std::string lead = Nth("s", k) + " - largest";
  if (calibration.GetMethod() == NBCalibration::kTemperature) {
    lead = "(" + lead + ") / " + SQLReal(calibration.GetTemperature());
  }
  return "CASE WHEN " + lead + " < " + SQLReal(kNegligible) + " THEN 0E0 ELSE EXP(" + lead +
         ") END";
}

// What a curve makes of the posterior p and what it lacks to 1, q (NBCalibration::Posterior).
std::string CurveAt(const NBCalibration::Curve& curve, const std::string& p, const std::string& q) {
  const auto isUpper = [](double x) { return x > 0.5; };
  std::string value = "CASE";
  for (std::size_t i = 0; i < curve.fX.size(); ++i) {
    const double x = curve.fX[i];
    const std::string test = isUpper(x) ? q + " > " + SQLExact(1 - x) : p + " < " + SQLExact(x);
    value += "\n        WHEN " + test + " THEN " + SQLExact(curve.fY[i == 0 ? 0 : i - 1]);
    if (i == 0 || curve.fY[i] == curve.fY[i - 1]) continue;
    const double before = curve.fX[i - 1];
    const std::string beyond = isUpper(before) ? "(" + SQLExact(1 - before) + " - " + q + ")"
                                               : "(" + p + " - " + SQLExact(before) + ")";
    value += " + " + SQLExact(curve.fY[i] - curve.fY[i - 1]) + " * (" + beyond + " / " +
             SQLExact(x - before) + ")";
  }
  return value + "\n        ELSE " + SQLExact(curve.fY.back()) + " END";
}

// The classes' own curves, their sum brought to 1 again.
std::vector<std::string> Normalised(const std::vector<std::string>& values) {
  const std::string sum = SQLSum(values);
  std::vector<std::string> shares;
  for (const std::string& value : values) {
    shares.push_back("CASE WHEN (" + sum + ") > 0E0 THEN " + value + " / (" + sum +
                     ") ELSE 1E0 / " + SQLReal(static_cast<double>(values.size())) + " END");
  }
  return shares;
}

// The steps from the evidence to calibrated probabilities, s1, s2, ..., and the largest one.
std::string CurveSteps(const ScoringModel& model, const std::string& evidence) {
  const std::vector<NBCalibration::Curve>& curves = model.fCalibration.GetCurves();
  const std::size_t classes = model.GetNClasses();
  const std::vector<std::string> p = Names("p", classes);
  std::vector<std::string> shares, posteriors, rests, values, calibrated;
  for (std::size_t k = 0; k < classes; ++k) {
    shares.push_back(Share(k, model.fCalibration) + " AS " + Nth("e", k));
    posteriors.push_back(Nth("e", k) + " / (" + SQLSum(Names("e", classes)) + ") AS " + p[k]);
    rests.push_back(p[k]);
    std::vector<std::string> others = p;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(k));
    if (others.empty()) others.push_back("0E0");
    rests.push_back("CASE WHEN " + p[k] + " > 5E-1 THEN " + SQLSum(others) + " ELSE 1E0 - " + p[k] +
                    " END AS " + Nth("q", k));
  }
  const bool isOneCurve = curves.size() == 1 && classes == 2;
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const std::size_t k = isOneCurve ? 1 : i;
    values.push_back(CurveAt(curves[i], p[k], Nth("q", k)) + " AS " + Nth("y", k));
  }
  calibrated =
      isOneCurve ? std::vector<std::string>{"1E0 - y2", "y2"} : Normalised(Names("y", classes));
  for (std::size_t k = 0; k < classes; ++k) calibrated[k] += " AS " + Nth("s", k);
  return WithLargest(
      classes,
      Step(calibrated, Step(values, Step(rests, Step(posteriors, Step(shares, evidence))))));
}

// Of classes that are equally likely, the one that INBAlgorithm takes: by weight; but where the
// first class is among them, the next one of them is passed over.
std::string Winner(const ScoringModel& model) {
  std::string winner = "CASE";
  for (const std::size_t k : ClassesByWeight(model)) {
    std::string test = Nth("s", k) + " = largest";
    if (k > 0) {
      std::vector<std::string> free = {"s1 < largest"};
      for (std::size_t i = 1; i < k; ++i) free.push_back(Nth("s", i) + " = largest");
      test += " AND (" + List(free, " OR ") + ")";
    }
    const std::string value = model.fTarget.fbTexts ? SQLText(model.fTarget.fTexts[k])
                                                    : SQLExact(model.fTarget.fNumbers[k]);
    winner += "\n      WHEN " + test + " THEN " + value;
  }
  return winner + " END";
}

std::string Column(const std::string& value, const std::string& steps, const std::string& name) {
  return ",\n  (SELECT " + value + "\n    FROM (" + steps + ") AS step) AS " + SQLName(name);
}

}  // namespace

ExportedModel ToSQL(const ScoringModel& model, const ExportOptions& options) {
  const OutputNames names = NamesOf(model);
  const bool hasCurves = model.fCalibration.GetMethod() == NBCalibration::kIsotonic;
  const std::string steps = hasCurves ? CurveSteps(model, Steps(model)) : Steps(model);
  std::string query = "-- Made by PredSelect " + options.fVersion +
                      ": adds a prediction and the probability of each class to a table.\n"
                      "SELECT t.*" +
                      Column(Winner(model), steps, names.fPredicted);
  std::vector<std::string> shares;
  for (std::size_t k = 0; k < model.GetNClasses(); ++k)
    shares.push_back(Share(k, model.fCalibration));
  for (std::size_t k = 0; k < model.GetNClasses(); ++k) {
    const std::string value = hasCurves ? Nth("s", k) : shares[k] + " / (" + SQLSum(shares) + ")";
    query += Column(value, steps, names.fProbabilities[k]);
  }
  query += "\nFROM " + SQLName(options.fTable) + " AS t\n";
  std::vector<std::string> notes;
  for (const ScoringInput& input : model.fInputs) {
    if (input.fName.size() <= kShortName) continue;
    notes.push_back("The name \"" + input.fName + "\" is longer than some databases let names be.");
  }
  return {query, notes};
}

}  // namespace MCModelFiles
