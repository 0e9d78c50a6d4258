#include "operations/ColumnSummary.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/MissingValue.h"
#include "host/output/TellApart.h"
#include "host/text/CsvText.h"
#include "host/text/DateText.h"

namespace PredSelect {

namespace {

using MCHost::ColumnView;

constexpr double kMicrosecond = 1e6;
constexpr double kMostSeconds = 1e12;  // as microseconds within 64 bits

std::string LabelOf(const std::string* label) { return label != nullptr ? *label : ""; }

// The first n of `all` by `precedes`.
template <class Item, class Precedes>
void KeepFirst(std::vector<Item>& all, std::size_t n, Precedes precedes) {
  const std::size_t nKept = std::min(n, all.size());
  std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(nKept), all.end(),
                    precedes);
  all.resize(nKept);
}

}  // namespace

void ColumnSummary::Observe(const ColumnView& column, std::size_t n) {
  if (column.fpNumbers != nullptr) {
    for (std::size_t i = 0; i < n; ++i) ObserveNumber(column.fpNumbers[i]);
    return;
  }
  fpDictionary = column.fpDictionary;
  for (std::size_t i = 0; i < n; ++i) ObserveCode(column.fpCodes[i]);
}

void ColumnSummary::ObserveNumber(double value) {
  if (MCMV::IsMissing(value)) {
    ++fNMissing;
  } else if (fpVariable->GetMissingValues().Contains(value)) {
    ++fNUserMissing;
  } else {
    AddValid(value);
  }
}

void ColumnSummary::AddValid(double value) {
  ++fNValid;
  fMinimum = fNValid == 1.0 ? value : std::min(fMinimum, value);
  fMaximum = fNValid == 1.0 ? value : std::max(fMaximum, value);
  fMoments.Add(value);
  fbWhole = fbWhole && value == std::floor(value);
  Distribute(value);
}

void ColumnSummary::Distribute(double value) {
  if (fDistinct.IsExact()) {
    if (fDistinct.Add(value)) return;
    for (const auto& [met, count] : fDistinct.GiveUp()) fSketch.Add(met, count);
  }
  fDistinct.Estimate(value);
  fSketch.Add(value);
}

void ColumnSummary::ObserveCode(std::int32_t code) {
  if (code < 0) {
    ++fNMissing;
    return;
  }
  const auto at = static_cast<std::size_t>(code);
  if (at >= fCodeCounts.size()) {
    fCodeCounts.resize(static_cast<std::size_t>(fpDictionary->Size()));
  }
  ++fCodeCounts[at];
}

void ColumnSummary::Finish() {
  if (fpDictionary != nullptr) return FinishTexts();
  fDistribution = Distribution(fDistinct.IsExact() ? fDistinct.TakeCounts() : fSketch.Weights());
  fSketch = {};
}

void ColumnSummary::FinishTexts() {
  for (std::size_t at = 0; at < fCodeCounts.size(); ++at) {
    const auto code = static_cast<std::int32_t>(at);
    const auto count = static_cast<double>(fCodeCounts[at]);
    if (count == 0.0) continue;
    if (fpVariable->GetMissingValues().Contains(fpDictionary->At(code))) {
      fNUserMissing += count;
    } else {
      fNValid += count;
      fMetCodes.push_back(code);
    }
  }
}

double ColumnSummary::Distinct() const {
  return fpDictionary != nullptr ? static_cast<double>(fMetCodes.size()) : fDistinct.Count();
}

std::vector<ColumnSummary::Category> ColumnSummary::MostFrequent(std::size_t n) const {
  if (fpDictionary != nullptr) return MostFrequentTexts(n);
  return fDistinct.IsExact() ? MostFrequentNumbers(n) : std::vector<Category>();
}

std::vector<ColumnSummary::Category> ColumnSummary::MostFrequentNumbers(std::size_t n) const {
  std::vector<DistinctCount::Counted> counts = fDistribution.Counts();
  KeepFirst(counts, n, [](const auto& left, const auto& right) {
    return left.second != right.second ? left.second > right.second : left.first < right.first;
  });
  std::vector<Category> categories;
  for (const auto& [value, count] : counts) {
    categories.push_back({ValueText(value), LabelOf(fpVariable->GetValueLabels().FindLabel(value)),
                          static_cast<double>(count)});
  }
  return categories;
}

std::vector<ColumnSummary::Category> ColumnSummary::MostFrequentTexts(std::size_t n) const {
  const auto countOf = [this](std::int32_t code) {
    return fCodeCounts[static_cast<std::size_t>(code)];
  };
  std::vector<std::int32_t> codes = fMetCodes;
  KeepFirst(codes, n, [&](std::int32_t left, std::int32_t right) {
    if (countOf(left) != countOf(right)) return countOf(left) > countOf(right);
    return fpDictionary->At(left) < fpDictionary->At(right);
  });
  std::vector<Category> categories;
  for (const std::int32_t code : codes) {
    const std::string& value = fpDictionary->At(code);
    categories.push_back({value, LabelOf(fpVariable->GetValueLabels().FindLabel(value)),
                          static_cast<double>(countOf(code))});
  }
  return categories;
}

std::vector<std::string> ColumnSummary::NamesOf(const std::vector<Category>& categories) {
  std::vector<MCHost::OutputText> values;
  for (const Category& category : categories) {
    values.push_back(MCHost::OutputText::Value(category.fValue, category.fLabel));
  }
  MCHost::TellApart(values);
  std::vector<std::string> names;
  for (MCHost::OutputText& value : values) {
    names.push_back(std::move(value.fLabel.empty() ? value.fKey : value.fLabel));
  }
  return names;
}

double ColumnSummary::Mean() const {
  return fpVariable->IsNumeric() && fNValid > 0.0 ? fMoments.Mean() : KOVA_SystemMissing;
}

double ColumnSummary::Deviation() const {
  const bool isThere = fpVariable->IsNumeric() && fNValid > 1.0;
  return isThere ? fMoments.Deviation() : KOVA_SystemMissing;
}

std::vector<double> ColumnSummary::Histogram(std::size_t nBins) const {
  if (fNValid == 0.0 || fpDictionary != nullptr) return {};
  return fDistribution.Histogram(nBins, fMinimum, fMaximum);
}

std::string ColumnSummary::ValueText(double value) const {
  std::string text;
  const bool isTime = fpVariable->GetTime() != KOVA_Variable::kNoTime;
  if (!isTime || MCMV::IsMissing(value) || std::fabs(value) > kMostSeconds) {
    if (!MCMV::IsMissing(value)) MCHost::AppendNumber(text, value);
    return text;
  }
  const auto parts = static_cast<std::int64_t>(std::llround(value * kMicrosecond));
  const auto unitsASecond = static_cast<std::int64_t>(kMicrosecond);
  switch (fpVariable->GetTime()) {
    case KOVA_Variable::kDate:
      MCHost::AppendDate(text, std::llround(value));
      break;
    case KOVA_Variable::kDateTime:
      MCHost::AppendDateTime(text, parts, unitsASecond);
      break;
    case KOVA_Variable::kTimeOfDay:
      MCHost::AppendTime(text, parts, unitsASecond);
      break;
    default:
      MCHost::AppendSeconds(text, parts, unitsASecond);
  }
  return text;
}

}  // namespace PredSelect
