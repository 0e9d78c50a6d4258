// What is shown and written of the drift between training and scoring.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/MemoryTable.h"
#include "host/output/BpError.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpGroup.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "operations/ScoringDrift.h"

namespace PredSelect {

namespace {

using MCHost::OutputMessage;
using MCHost::OutputText;

constexpr double kMuchNew = 0.05;
constexpr double kMuchMoreMissing = 0.10;
constexpr std::size_t kNamed = 5;

// A predictor in a warning, and how much it is worth one.
struct Mention {
  double fShare;
  std::string fText;
};

std::string Percent(double share) {
  char text[16];
  const int length = std::snprintf(text, sizeof(text), "%.1f%%", 100.0 * share);
  return {text, static_cast<std::size_t>(length)};
}

// Warns of the worst, by name, and of how many more there are.
void Warn(const char* key, std::vector<Mention> mentions) {
  if (mentions.empty()) return;
  std::ranges::stable_sort(mentions, std::ranges::greater(), &Mention::fShare);
  std::string list;
  for (std::size_t i = 0; i < std::min(mentions.size(), kNamed); ++i) {
    list += (i > 0 ? ", " : "") + mentions[i].fText;
  }
  if (mentions.size() > kNamed) {
    list = MCHost::KeyText("^1 and ^2 more", {list, std::to_string(mentions.size() - kNamed)});
  }
  MCHost::RaiseMessage(OutputMessage::kWarning, key, {list});
}

void WarnOfDrift(const ScoringDrift& drift) {
  std::vector<Mention> anew;
  std::vector<Mention> missing;
  for (const PredictorDrift& predictor : drift.fPredictors) {
    const double newShare = drift.ShareOf(predictor.GetNNew());
    const double missingShare = drift.ShareOf(predictor.fNMissing);
    const double more = missingShare - predictor.fTrainingMissing;
    if (newShare > kMuchNew) {
      anew.push_back({newShare, predictor.fName + " (" + Percent(newShare) + ")"});
    }
    if (more > kMuchMoreMissing) {
      missing.push_back(
          {more, MCHost::KeyText("^1 (^2 instead of ^3)", {predictor.fName, Percent(missingShare),
                                                           Percent(predictor.fTrainingMissing)})});
    }
  }
  Warn("Values that training did not have: ^1...", anew);
  Warn("Missing more often than in training: ^1...", missing);
  if (drift.ShareOf(drift.fNUnusable) <= kMuchNew) return;
  MCHost::RaiseMessage(OutputMessage::kWarning, "^1 of ^2 cases without a usable predictor...",
                       {std::to_string(drift.fNUnusable), std::to_string(drift.fNCases)});
}

bool IsAnythingCounted(const PredictorDrift& predictor) {
  return predictor.GetNNew() > 0 || predictor.fNMissing > 0 || predictor.fTrainingMissing > 0.0;
}

}  // namespace

void ShowDrift(const ScoringDrift& drift) {
  WarnOfDrift(drift);
  if (std::ranges::none_of(drift.fPredictors, IsAnythingCounted)) return;
  BpPivotTable table("Drift", "ScoringDrift");
  BpDimension rows = table.RowDimension("Predictor");
  BpDimension columns = table.ColumnDimension("Statistics");
  const auto count = BpProcedure::Count();
  const auto percent = BpProcedure::Percent();
  const BpCategory unseen = columns.AddCategory(BpString("New Category"), count);
  const BpCategory below = columns.AddCategory(BpString("Below Range"), count);
  const BpCategory above = columns.AddCategory(BpString("Above Range"), count);
  BpGroup group = columns.AddGroup(BpString("Missing"));
  const BpCategory missing = group.AddCategory(BpString("N"), count);
  const BpCategory share = group.AddCategory(BpString("Percent"), percent);
  const BpCategory before = group.AddCategory(BpString("Percent in Training"), percent);
  for (const PredictorDrift& predictor : drift.fPredictors) {
    if (!IsAnythingCounted(predictor)) continue;
    const BpCategory row = rows.AddCategory(OutputText::Literal(predictor.fName));
    const auto set = [&](const BpCategory& column, std::int64_t cases) {
      table.SetCell({row, column}, static_cast<double>(cases));
    };
    if (predictor.fbCategorical) {
      set(unseen, predictor.fNUnseen);
    } else {
      set(below, predictor.fNBelow);
      set(above, predictor.fNAbove);
    }
    set(missing, predictor.fNMissing);
    table.SetCell({row, share}, 100.0 * drift.ShareOf(predictor.fNMissing));
    table.SetCell({row, before}, 100.0 * predictor.fTrainingMissing);
  }
  table.Show();
}

std::unique_ptr<MCHost::MemoryTable> DriftTable(const ScoringDrift& drift) {
  std::vector<std::optional<std::string>> names;
  std::vector<std::optional<std::string>> kinds;
  for (const PredictorDrift& predictor : drift.fPredictors) {
    names.emplace_back(predictor.fName);
    kinds.emplace_back(predictor.fbCategorical ? "categorical" : "continuous");
  }
  auto table = std::make_unique<MCHost::MemoryTable>();
  table->AddStrings("predictor", names);
  table->AddStrings("kind", kinds);
  const auto add = [&](const char* name, auto valueOf) {
    std::vector<double> values;
    for (const PredictorDrift& predictor : drift.fPredictors) values.push_back(valueOf(predictor));
    table->AddNumbers(name, values);
  };
  // A count that only the one kind has.
  const auto addCount = [&](const char* name, std::int64_t PredictorDrift::*count, bool ofKind) {
    add(name, [count, ofKind](const PredictorDrift& predictor) {
      const bool isThere = predictor.fbCategorical == ofKind;
      return isThere ? static_cast<double>(predictor.*count) : KOVA_SystemMissing;
    });
  };
  add("cases", [&](const PredictorDrift&) { return static_cast<double>(drift.fNCases); });
  addCount("unseen", &PredictorDrift::fNUnseen, true);
  addCount("below", &PredictorDrift::fNBelow, false);
  addCount("above", &PredictorDrift::fNAbove, false);
  add("missing", [](const PredictorDrift& p) { return static_cast<double>(p.fNMissing); });
  add("missing_share", [&](const PredictorDrift& p) { return drift.ShareOf(p.fNMissing); });
  add("training_missing_share", [](const PredictorDrift& p) { return p.fTrainingMissing; });
  return table;
}

}  // namespace PredSelect
