#include "operations/DescriptionFindings.h"

#include "host/data/MeasurementLevels.h"
#include "operations/ColumnSummary.h"
#include "operations/FindingsParts.h"
#include "operations/MissingPatterns.h"
#include "operations/ShowDescription.h"
#include "operations/ShowMissingPatterns.h"

namespace PredSelect {

namespace {

constexpr std::size_t kBins = 24;
constexpr std::size_t kMostFrequent = 12;

Json Numbers(const ColumnSummary& summary) {
  Json json = {{"low", JsonNumber(summary.Minimum())},
               {"high", JsonNumber(summary.Maximum())},
               {"mean", JsonNumber(summary.Mean())},
               {"deviation", JsonNumber(summary.Deviation())},
               {"quantiles", Json::array()},
               {"counts", summary.Histogram(kBins)},
               {"ends", Json::array()}};
  for (const double share : {0.05, 0.25, 0.5, 0.75, 0.95}) {
    json["quantiles"].push_back(JsonNumber(summary.Quantile(share)));
  }
  for (const double end : {summary.Minimum(), summary.Maximum()}) {
    json["ends"].push_back(summary.ValueText(end));
  }
  return json;
}

Json Categories(const ColumnSummary& summary) {
  const std::vector<ColumnSummary::Category> found = summary.MostFrequent(kMostFrequent);
  const std::vector<std::string> names = ColumnSummary::NamesOf(found);
  Json categories = Json::array();
  for (std::size_t i = 0; i < found.size(); ++i) {
    categories.push_back({names[i], found[i].fCases});
  }
  return categories;
}

Json Described(const ColumnSummary& summary) {
  const KOVA_Variable& variable = summary.Variable();
  const bool isScale = variable.GetMeasurementLevel() == KOVA_Variable::kScale;
  Json json = {{"name", variable.GetName()},
               {"label", variable.GetLabel()},
               {"numeric", variable.IsNumeric()},
               {"time", variable.GetTime() != KOVA_Variable::kNoTime},
               {"level", MCHost::MeasurementLevelName(variable.GetMeasurementLevel())},
               {"reason", LevelReason(summary)},
               {"valid", summary.Valid()},
               {"missing", summary.Missing()},
               {"user_missing", summary.UserMissing()},
               {"distinct", summary.Distinct()},
               {"exact", summary.IsDistinctExact()}};
  if (isScale && summary.Valid() > 0.0) {
    json["numbers"] = Numbers(summary);
  } else {
    json["categories"] = Categories(summary);
  }
  return json;
}

Json Patterns(const MissingPatterns& patterns) {
  Json rows = Json::array();
  for (const MissingPatterns::Pattern& pattern : patterns.MostFrequent(kShownPatterns)) {
    rows.push_back(
        {{"cases", pattern.fNCases}, {"more", pattern.fNMore}, {"missing", pattern.fColumns}});
  }
  return {{"rows", std::move(rows)},
          {"distinct", patterns.IsExact() ? Json(patterns.Count()) : Json(nullptr)}};
}

}  // namespace

std::string DescriptionFindings(const std::vector<ColumnSummary>& summaries,
                                const MissingPatterns& patterns, double nCases) {
  Json json = {{"kind", "description"}, {"cases", nCases}, {"variables", Json::array()}};
  for (const ColumnSummary& summary : summaries) json["variables"].push_back(Described(summary));
  json["patterns"] = Patterns(patterns);
  return TextOf(json);
}

}  // namespace PredSelect
