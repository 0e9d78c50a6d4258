// Whole NAIVEBAYES commands over small tables in memory, as their JSON documents tell them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>

#include "tests/backend/CommandTest.h"
#include "tests/backend/NaiveReference.h"

namespace {

using MCTest::json;
using MCTest::NaiveCases;
using MCTest::NaiveReference;
using MCTest::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Subset = NaiveReference::Subset;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTolerance = 1e-12;

// What a command asks for, as the reference must know it.
struct Asked {
  const char* fName;
  std::string fCommand;  // after the variables
  bool fbWeighted = false;
  bool fbIncluded = false;  // user-missing values are valid
  bool fbSplit = false;     // by the variable "train"
  Subset fForced = {};
  bool fbTest = false;
  int fMaxSize = 6;
  bool fbExact = false;
  int fBins = 10;
  bool fbSimulated = false;  // the order of entry is the engine's own
};

class NaiveBayes : public MCTest::CommandTest {
 protected:
  static constexpr double kUserMissing = 9;

  // A target of three categories and a user-missing one; categorical predictors as strings (s2, s4)
  // and numbers (n3, m4, the latter with a user-missing value), scale ones (c0, and c1 with a
  // user-missing value far off); weights of all kinds; a marker of training cases. Every predictor
  // is related to the target, each less than the one before; a tenth of all values is missing.
  void FillTable(int nCases = 180) {
    std::mt19937 random(20240301);
    const auto uniform = [&random] { return random() * 0x1p-32; };
    const auto orMissing = [&uniform](double value) { return uniform() < 0.1 ? kNaN : value; };
    fRaw.fPredictors = {{"s2", false, {}}, {"n3", false, {}}, {"s4", false, {}},
                        {"m4", false, {}}, {"c0", true, {}},  {"c1", true, {}}};
    const int categories[] = {2, 3, 4, 4};
    for (int i = 0; i < nCases; ++i) {
      const int y = static_cast<int>(uniform() * 3);
      fRaw.fTarget.push_back(uniform() < 0.06 ? kUserMissing : orMissing(y));
      const double weights[] = {1, 2, 1.4, 0.5, 0.3, 0, -2, kNaN};
      fRaw.fWeights.push_back(weights[static_cast<int>(uniform() * 8)]);
      fMarks.push_back(orMissing(uniform() < 0.65 ? 1 : 2 * static_cast<int>(uniform() * 2)));
      for (int j = 0; j < 4; ++j) {
        const bool isTied = uniform() < 0.7 - 0.15 * j;
        double value = isTied ? (y + j) % categories[j] : std::floor(uniform() * categories[j]);
        if (j == 3 && uniform() < 0.1) value = kUserMissing;
        fRaw.fPredictors[j].fValues.push_back(orMissing(value));
      }
      fRaw.fPredictors[4].fValues.push_back(orMissing(2 * uniform() + y));
      fRaw.fPredictors[5].fValues.push_back(uniform() < 0.1 ? -99 : orMissing(3 * uniform() + y));
    }
    // A far value leaves bins empty between, into which test cases fall, on either side.
    for (int i = 0; i < 6; ++i) {
      fRaw.fPredictors[4].fValues[i] = std::vector<double>{12.5, 12.5, 6.9, 8.3, 6.9, 8.3}[i];
      fRaw.fTarget[i] = i % 3;
      fRaw.fWeights[i] = 1;
      fMarks[i] = i < 2 ? 1 : 0;
    }
    fTable.AddStrings("y", Letters(fRaw.fTarget));
    for (const auto& predictor : fRaw.fPredictors) {
      if (predictor.fName[0] == 's') {
        fTable.AddStrings(predictor.fName, Letters(predictor.fValues));
      } else {
        fTable.AddNumbers(predictor.fName, predictor.fValues);
      }
    }
    fTable.AddNumbers("train", fMarks);
    fWeight = fTable.AddNumbers("w", fRaw.fWeights);
    fTable.GetVariable(0).GetMissingValues().AddString(Letter(kUserMissing));
    fTable.GetVariable(4).GetMissingValues().AddNumber(kUserMissing);
    fTable.GetVariable(6).GetMissingValues().SetRange(-100, -90);
  }

  static std::string Letter(double code) {
    return {static_cast<char>('p' + static_cast<int>(code))};
  }
  static Strings Letters(const std::vector<double>& codes) {
    Strings letters;
    for (const double code : codes) {
      letters.push_back(std::isnan(code) ? std::nullopt : std::optional(Letter(code)));
    }
    return letters;
  }

  NaiveCases Cases(const Asked& asked) const {
    NaiveCases cases = fRaw;
    if (!asked.fbWeighted) cases.fWeights.clear();
    for (const double mark : fMarks) cases.fTraining.push_back(!asked.fbSplit || mark == 1);
    if (asked.fbIncluded) return cases;
    std::replace(cases.fTarget.begin(), cases.fTarget.end(), kUserMissing, kNaN);
    auto& m4 = cases.fPredictors[3].fValues;
    std::replace(m4.begin(), m4.end(), kUserMissing, kNaN);
    auto& c1 = cases.fPredictors[5].fValues;
    std::replace(c1.begin(), c1.end(), -99.0, kNaN);
    return cases;
  }

  json RunAsked(const Asked& asked) {
    fTable.SetWeightVarIndex(asked.fbWeighted ? fWeight : -1);
    const std::string run = std::to_string(++fNRuns);
    fSavedValue = "pred" + run;
    fSavedRoot = "prob" + run;
    return Run("NAIVEBAYES y BY s2 n3 s4 m4 WITH c0 c1 " + asked.fCommand + " /SAVE PREDVAL(" +
               fSavedValue + ") PREDPROB(" + fSavedRoot +
               ":3) /MISSING USERMISSING=" + (asked.fbIncluded ? "INCLUDE" : "EXCLUDE") + ".");
  }

  // The subset table, and the subset that it says was chosen.
  void CheckSubsets(const json& run, const Asked& asked, const NaiveReference& reference,
                    Subset& chosen) const {
    const int nForced = static_cast<int>(asked.fForced.size());
    const Subset order =
        asked.fbSimulated ? OrderOf(run, asked) : reference.Forward(asked.fForced, asked.fMaxSize);
    const char* criterion = asked.fbTest ? "Test Data Criterion" : "Pseudo-BIC";
    std::vector<std::pair<double, int>> ranked;
    for (int size = nForced; size <= static_cast<int>(order.size()); ++size) {
      const json row = {std::to_string(size - nForced)};
      const Subset subset(order.begin(), order.begin() + size);
      if (size == 0) continue;
      if (!asked.fbSimulated || !asked.fbTest || size == nForced) {
        EXPECT_NEAR(Number(run, row, "Average Log-Likelihood"), reference.LogLikelihood(subset),
                    kTolerance);
      }
      if (size > nForced) {
        EXPECT_EQ(Cell(run, "SubsetSummary", row, {"Predictor Added"}),
                  fRaw.fPredictors[order[size - 1]].fName);
      }
      if (asked.fbExact) {
        EXPECT_NEAR(Number(run, row, "Pseudo-BIC"), reference.PseudoBIC(subset), kTolerance);
        EXPECT_EQ(Cell(run, "SubsetSummary", row, {"Rank"}), "no such cell");
        continue;
      }
      const double value =
          asked.fbTest ? -reference.LogLikelihood(subset, false) : reference.PseudoBIC(subset);
      EXPECT_NEAR(Number(run, row, criterion), value, kTolerance) << "size " << size;
      ranked.emplace_back(value, size);
    }
    std::sort(ranked.begin(), ranked.end());
    for (std::size_t rank = 0; rank < ranked.size(); ++rank) {
      const json row = {std::to_string(ranked[rank].second - nForced)};
      EXPECT_EQ(Number(run, row, "Rank"), static_cast<double>(rank + 1));
    }
    const int size = asked.fbExact ? static_cast<int>(order.size()) : ranked.front().second;
    chosen.assign(order.begin(), order.begin() + size);
    EXPECT_THAT(ChosenRows(run), ElementsAre(std::to_string(size - nForced)));
    EXPECT_EQ(Cell(run, "SubsetSummary", {std::to_string(order.size() - nForced + 1)},
                   {"Predictor Added"}),
              "no such cell");
  }

  Subset OrderOf(const json& run, const Asked& asked) const {
    Subset order = asked.fForced;
    for (int step = 1; step <= asked.fMaxSize; ++step) {
      const json name = Cell(run, "SubsetSummary", {std::to_string(step)}, {"Predictor Added"});
      for (std::size_t j = 0; j < fRaw.fPredictors.size(); ++j) {
        if (fRaw.fPredictors[j].fName == name) order.push_back(static_cast<int>(j));
      }
    }
    EXPECT_EQ(order.size(), fRaw.fPredictors.size());
    return order;
  }

  static double Number(const json& run, const json& row, const char* column) {
    const json value = Cell(run, "SubsetSummary", row, {column});
    return value.is_number() ? value.get<double>() : kNaN;
  }

  // The rows whose added predictor carries the note of the chosen subset.
  static std::vector<std::string> ChosenRows(const json& run) {
    std::vector<std::string> rows;
    for (const json& table : run["tables"]) {
      for (const json& cell : table["cells"]) {
        for (const int note : cell["notes"]) {
          if (table["footnotes"][note] == "The chosen subset.") rows.push_back(cell["row"][0]);
        }
      }
    }
    return rows;
  }

  // Candidates in the order of the data, then forced predictors.
  void CheckSelected(const json& run, const Asked& asked, Subset chosen) const {
    const auto added = chosen.begin() + static_cast<int>(asked.fForced.size());
    std::rotate(chosen.begin(), added, chosen.end());
    std::sort(chosen.begin(), chosen.end() - static_cast<int>(asked.fForced.size()));
    for (const bool isScale : {false, true}) {
      json names = json::array();
      for (const int j : chosen) {
        if (fRaw.fPredictors[j].fbScale == isScale) names.push_back(fRaw.fPredictors[j].fName);
      }
      const json expected = names.empty() ? json("no such cell") : names;
      EXPECT_EQ(
          Cell(run, "SelectedPredictors", {isScale ? "Scale" : "Categorical"}, {"Predictors"}),
          expected);
    }
  }

  void CheckCounts(const json& run, const NaiveReference& reference, const Subset& chosen) const {
    const int nClasses = reference.NClasses();
    for (const bool training : {true, false}) {
      std::vector<std::vector<double>> counts(nClasses, std::vector<double>(nClasses, 0.0));
      for (int i = 0; i < reference.Size(); ++i) {
        if (!reference.IsCounted(i) || reference.IsTraining(i) != training) continue;
        counts[reference.Class(i)][reference.Winner(i, chosen)] += reference.Weight(i);
      }
      const json layer = {training ? "Training" : "Test"};
      double correct = 0;
      for (int k = 0; k < nClasses && reference.N(training) > 0; ++k) {
        const json row = {"Values", ClassName(reference, k)};
        for (int c = 0; c < nClasses; ++c) {
          EXPECT_EQ(Cell(run, "Classification", row, {"Values", ClassName(reference, c)}, layer),
                    counts[k][c]);
        }
        correct += counts[k][k];
      }
      const json overall =
          Cell(run, "Classification", {"Overall Percent"}, {"Percent Correct"}, layer);
      if (reference.N(training) == 0) {
        EXPECT_EQ(overall, "no such cell");
      } else {
        EXPECT_NEAR(overall.get<double>(), correct / reference.N(training) * 100, kTolerance * 100);
      }
    }
  }

  static std::string ClassName(const NaiveReference&, int k) {
    return Letter(k == 3 ? kUserMissing : k);
  }

  void CheckSaved(const NaiveReference& reference, const Subset& chosen) {
    const Strings values = StringCells(fSavedValue);
    ASSERT_EQ(values.size(), fRaw.fTarget.size());
    for (int k = 0; k < 3; ++k) {
      const std::vector<double> column = NumberCells(fSavedRoot + "_" + std::to_string(k + 1));
      for (int i = 0; i < reference.Size(); ++i) {
        EXPECT_NEAR(column[i], reference.Posterior(i, chosen, k, true), kTolerance) << i;
      }
    }
    for (int i = 0; i < reference.Size(); ++i) {
      EXPECT_EQ(values[i], ClassName(reference, reference.Winner(i, chosen))) << i;
    }
  }

  int Column(const std::string& name) const {
    for (int i = 0; i < fTable.ColumnCount(); ++i) {
      if (fTable.GetVariable(i).GetName() == name) return i;
    }
    return -1;
  }
  std::vector<double> NumberCells(const std::string& name) {
    std::vector<double> cells;
    const auto scan = fTable.Scan({Column(name)});
    for (const auto* batch = scan->Next(); batch != nullptr; batch = scan->Next()) {
      const double* values = batch->fColumns[0].fpNumbers;
      cells.insert(cells.end(), values, values + batch->fNCases);
    }
    return cells;
  }
  Strings StringCells(const std::string& name) {
    Strings cells;
    const auto scan = fTable.Scan({Column(name)});
    for (const auto* batch = scan->Next(); batch != nullptr; batch = scan->Next()) {
      const MCHost::ColumnView& view = batch->fColumns[0];
      for (std::size_t i = 0; i < batch->fNCases; ++i) {
        const int code = view.fpCodes[i];
        cells.push_back(code < 0 ? std::nullopt : std::optional(view.fpDictionary->At(code)));
      }
    }
    return cells;
  }

  NaiveCases fRaw;
  std::vector<double> fMarks;
  int fWeight = -1;
  int fNRuns = 0;
  std::string fSavedValue;
  std::string fSavedRoot;
};

TEST_F(NaiveBayes, AgreesWithItsDefinitionsInTablesAndSavedVariables) {
  FillTable();
  const Asked cases[] = {
      {"plain", ""},
      {"weighted", "", true},
      {"user-missing values included", "", false, true},
      {"weighted, all included, split", "/TRAININGSAMPLE VARIABLE=train", true, true, true},
      {"forced",
       "/FORCE FACTORS=m4 COVARIATES=c1 /SUBSET MAXSIZE=3",
       true,
       false,
       false,
       {3, 5},
       false,
       3},
      {"chosen by test data",
       "/TRAININGSAMPLE VARIABLE=train /SUBSET MAXSIZE=AUTO(BESTSUBSET="
       "TESTDATA) /CRITERIA BINS=4",
       false,
       false,
       true,
       {},
       true,
       6,
       false,
       4},
      {"forced, weighted, chosen by test data",
       "/FORCE FACTORS=s4 /TRAININGSAMPLE VARIABLE=train "
       "/SUBSET MAXSIZE=4(BESTSUBSET=TESTDATA)",
       true,
       false,
       true,
       {2},
       true,
       4},
      {"exact size",
       "/SUBSET EXACTSIZE=2 /CRITERIA BINS=3",
       false,
       false,
       false,
       {},
       false,
       2,
       true,
       3},
      {"forced, exact size",
       "/FORCE COVARIATES=c0 /SUBSET EXACTSIZE=3",
       true,
       true,
       false,
       {4},
       false,
       3,
       true},
      {"in little memory",
       "/CRITERIA MEMALLOCATE=4",
       true,
       false,
       false,
       {},
       false,
       6,
       false,
       10,
       true},
      {"in little memory, forced, chosen by test data",
       "/FORCE FACTORS=n3 /TRAININGSAMPLE VARIABLE=train /SUBSET MAXSIZE=5(BESTSUBSET=TESTDATA) "
       "/CRITERIA MEMALLOCATE=4",
       false,
       true,
       true,
       {1},
       true,
       5,
       false,
       10,
       true},
  };
  for (const Asked& asked : cases) {
    SCOPED_TRACE(asked.fName);
    const json run = RunAsked(asked);
    EXPECT_FALSE(fbError);
    const NaiveReference reference(Cases(asked), asked.fBins);
    Subset chosen;
    CheckSubsets(run, asked, reference, chosen);
    CheckSelected(run, asked, chosen);
    CheckCounts(run, reference, chosen);
    CheckSaved(reference, chosen);
  }
}

TEST_F(NaiveBayes, DescribesSavedVariablesByTheTarget) {
  const Strings species = {"wide tailed", "narrow", "wide tailed", "narrow", "short-tailed"};
  fTable.AddStrings("species", species);
  fTable.AddNumbers("size", {0.125, 0.13, 0.125, 0.13, 2});
  fTable.AddStrings("x", {"a", "b", "a", "b", "a"});
  fTable.GetVariable(1).SetMeasurementLevel(KOVA_Variable::kOrdinal);
  fTable.GetVariable(1).SetFormat({KOVA_Format::kNumber, 6, 2});
  (void)Run("NAIVEBAYES species BY x.");
  EXPECT_EQ(fRoom, 0);
  (void)Run("NAIVEBAYES species BY x /SAVE PREDVAL PREDPROB(p:2).");
  EXPECT_EQ(fRoom, 2 + 2) << "twelve bytes and two numbers";
  (void)Run("NAIVEBAYES species BY x /SAVE PREDVAL(v) PREDPROB(q:2147483647).");
  EXPECT_EQ(fRoom, std::numeric_limits<int>::max());
  const KOVA_Variable& text = fTable.GetVariable(Column("PredictedValue"));
  EXPECT_EQ(text.GetType(), 12);
  EXPECT_EQ(text.GetFormat().ToString(), "A12");
  EXPECT_EQ(text.GetLabel(), "Predicted value");
  const KOVA_Variable& second = fTable.GetVariable(Column("p_2"));
  EXPECT_EQ(second.GetLabel(), "Predicted probability that species is short-tailed");
  EXPECT_EQ(second.GetFormat().ToString(), "F5.3");
  EXPECT_EQ(second.GetMeasurementLevel(), KOVA_Variable::kScale);
  EXPECT_EQ(Column("p_3"), -1);

  (void)Run("NAIVEBAYES size BY x /SAVE PREDVAL PREDPROB(p).");
  EXPECT_EQ(fRoom, 1 + 25);
  const KOVA_Variable& number = fTable.GetVariable(Column("PredictedValue_1"));
  EXPECT_EQ(number.GetType(), 0);
  EXPECT_EQ(number.GetFormat().ToString(), "F6.2");
  EXPECT_EQ(number.GetMeasurementLevel(), KOVA_Variable::kOrdinal);
  // The values themselves, not as few digits as the format shows.
  EXPECT_EQ(fTable.GetVariable(Column("p_1_1")).GetLabel(),
            "Predicted probability that size is 0.125");
  EXPECT_EQ(fTable.GetVariable(Column("p_1_3")).GetLabel(), "Predicted probability that size is 2");
  EXPECT_THAT(NumberCells("PredictedValue_1"), ElementsAre(0.125, 0.13, 0.125, 0.13, 0.125));
}

TEST_F(NaiveBayes, ShowsNoClassificationTableThatWouldBeTooLarge) {
  std::vector<double> y;
  std::vector<double> x;
  for (int i = 0; i < 2002; ++i) {
    y.push_back(i / 2);
    x.push_back(i / 2 % 7);
  }
  fTable.AddNumbers("y", y);
  fTable.AddNumbers("x", x);
  fTable.GetVariable(0).SetMeasurementLevel(KOVA_Variable::kNominal);
  const json run = Run("NAIVEBAYES y BY x /SAVE PREDVAL /PRINT CLASSIFICATION.");
  EXPECT_THAT(Titles(run), IsEmpty());
  EXPECT_THAT(Keys(run), ElementsAre("Too many categories to show classification: ^1, ^2..."));
  EXPECT_EQ(NumberCells("PredictedValue")[0], 0.0) << "the smallest of the first seventh";
}

TEST_F(NaiveBayes, SaysWhereSimulatedDataWereUsed) {
  FillTable();  // eight variables a record: 51 of them in the least memory
  const auto footnotes = [this](const std::string& options) {
    const json run = Run("NAIVEBAYES y BY s2 n3 s4 m4 WITH c0 c1 " + options + " /PRINT SUMMARY.");
    return run["tables"][0]["footnotes"].dump();
  };
  const std::string test = "/TRAININGSAMPLE VARIABLE=train /SUBSET MAXSIZE=4(BESTSUBSET=TESTDATA) ";
  const std::string little = "/CRITERIA MEMALLOCATE=4";
  const auto estimated = testing::HasSubstr("Estimated with simulated data");
  const auto order = testing::HasSubstr("the order in which predictors were added");
  EXPECT_THAT(footnotes(test + little), testing::AllOf(estimated, order));
  EXPECT_THAT(footnotes(test), testing::Not(testing::AnyOf(estimated, order)));
  EXPECT_THAT(footnotes("/SUBSET EXACTSIZE=2 " + little), estimated);
  const auto anew = testing::HasSubstr("The order rests on simulated data");
  EXPECT_THAT(footnotes(little), testing::AllOf(anew, testing::Not(estimated)));
  EXPECT_THAT(footnotes(""), testing::Not(anew));
  EXPECT_THAT(footnotes("/SUBSET EXACTSIZE=2 /CRITERIA MEMALLOCATE=1e300"),
              testing::Not(estimated));
}

TEST_F(NaiveBayes, TakesAllPredictorsWithoutSelection) {
  FillTable();
  const Asked asked = {"",
                       "/FORCE COVARIATES=c1 /SUBSET NOSELECTION /TRAININGSAMPLE "
                       "VARIABLE=train",
                       true, false, true};
  const json run = RunAsked(asked);
  const NaiveReference reference(Cases(asked), asked.fBins);
  EXPECT_THAT(Titles(run), ElementsAre("Case Processing Summary", "Classification"));
  CheckCounts(run, reference, {0, 1, 2, 3, 4, 5});
  CheckSaved(reference, {0, 1, 2, 3, 4, 5});
}

// The last cases, which are excluded, come first the other way round.
TEST_F(NaiveBayes, TheOrderOfCasesMeansNothing) {
  Strings y, a;
  std::vector<double> x, w;
  for (int i = 0; i < 90; ++i) {
    const bool isLeft = i >= 70;
    y.push_back(isLeft && i % 2 == 0 ? std::nullopt : std::optional(Letter(i % 3)));
    a.push_back(i % 11 == 0 ? std::nullopt : std::optional(Letter((i % 3 + i % 5 / 3) % 3)));
    x.push_back(i % 3 * 2 + i % 7);
    w.push_back(isLeft ? i % 4 - 1 : 1 + i % 2);
  }
  std::vector<json> tables;
  for (int order = 0; order < 2; ++order) {
    fTable = MCHost::MemoryTable();
    fTable.AddStrings("y", y);
    fTable.AddStrings("a", a);
    fTable.AddNumbers("x", x);
    fTable.AddNumbers("w", w);
    fTable.SetWeightVarIndex(3);
    tables.push_back(
        Run("NAIVEBAYES y BY a WITH x /PRINT CPS EXCLUDED SUMMARY SELECTED CLASSIFICATION.")
            ["tables"]);
    std::reverse(y.begin(), y.end());
    std::reverse(a.begin(), a.end());
    std::reverse(x.begin(), x.end());
    std::reverse(w.begin(), w.end());
  }
  ASSERT_EQ(tables[0].size(), 4u);
  for (std::size_t t = 0; t < tables[0].size(); ++t) {
    ASSERT_EQ(tables[0][t]["cells"].size(), tables[1][t]["cells"].size());
    for (std::size_t c = 0; c < tables[0][t]["cells"].size(); ++c) {
      const json &cell = tables[0][t]["cells"][c], &other = tables[1][t]["cells"][c];
      EXPECT_EQ(cell["row"], other["row"]);
      EXPECT_EQ(cell["column"], other["column"]);
      if (cell["value"].is_number()) {
        EXPECT_NEAR(cell["value"].get<double>(), other["value"].get<double>(), 1e-12) << cell;
      } else {
        EXPECT_EQ(cell["value"], other["value"]);
      }
    }
  }
}

TEST_F(NaiveBayes, CountsTheTrainingCasesByCategoryAndWeight) {
  FillTable();
  const Asked asked = {"", "/TRAININGSAMPLE VARIABLE=train", true, false, true};
  const json run = RunAsked(asked);
  const NaiveReference reference(Cases(asked), asked.fBins);
  const auto count = [&run](const char* row, const char* column) {
    return Cell(run, "CaseProcessingSummary", {row}, {column});
  };
  EXPECT_EQ(count("Valid", "N"), reference.N());
  double valid = 0;
  double training = 0;
  std::vector<double> classes(3, 0.0);
  std::vector<int> nClasses(3, 0);
  for (int i = 0; i < reference.Size(); ++i) {
    if (!reference.IsTraining(i)) continue;
    ++training;
    if (!reference.IsCounted(i)) continue;
    ++valid;
    classes[reference.Class(i)] += reference.Weight(i);
    ++nClasses[reference.Class(i)];
  }
  EXPECT_EQ(count("Valid", "Unweighted N"), valid);
  EXPECT_EQ(count("Total", "Unweighted N"), training);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"y", Letter(k)}, {"N"}), classes[k]);
    EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"y", Letter(k)}, {"Unweighted N"}), nClasses[k]);
  }
}

}  // namespace
