// The model as one query. Each new column is a subquery without a table of its own, over the row at
// hand: its values as numbers, the rows of the predictors' tables that they stand for, the sums of
// evidence, the largest of these. The limits keep a database from folding these steps into one,
// which would compute each of them as often as the next one needs it.
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

// The steps up to the evidence for each class, s1, s2, ..., and the largest one.
std::string Steps(const ScoringModel& model) {
  std::vector<std::string> values, rows, sums, largest;
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
    largest.push_back(Nth("s", k));
  }
  largest.push_back(Largest(model.GetNClasses()) + " AS largest");
  return Step(largest, Step(sums, Step(rows, Step(values, ""))));
}

std::string Share(std::size_t k, const NBCalibration& calibration) {
  std::string lead = Nth("s", k) + " - largest";
  if (calibration.GetMethod() == NBCalibration::kTemperature) {
    lead = "(" + lead + ") / " + SQLReal(calibration.GetTemperature());
  }
  return "CASE WHEN " + lead + " < " + SQLReal(kNegligible) + " THEN 0E0 ELSE EXP(" + lead +
         ") END";
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
  const std::string steps = Steps(model);
  std::string query = "-- Made by PredSelect " + options.fVersion +
                      ": adds a prediction and the probability of each class to a table.\n"
                      "SELECT t.*" +
                      Column(Winner(model), steps, names.fPredicted);
  std::vector<std::string> shares;
  for (std::size_t k = 0; k < model.GetNClasses(); ++k)
    shares.push_back(Share(k, model.fCalibration));
  for (std::size_t k = 0; k < model.GetNClasses(); ++k) {
    query += Column(shares[k] + " / (" + SQLSum(shares) + ")", steps, names.fProbabilities[k]);
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
