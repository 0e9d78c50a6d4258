#include "naivebayes/variables/NBCodeMap.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/variables/NBCatVar.h"

namespace {

std::string LabelOf(const INBEncoder& encoder, int code) {
  const std::vector<std::string>& labels = encoder.GetValueLabels();
  return code < static_cast<int>(labels.size()) ? labels[code] : std::string();
}

// Labels go with their categories; a category that has one here keeps it.
void TakeLabels(const INBEncoder& from, const std::vector<int>& map, INBEncoder& to) {
  std::vector<std::string> labels(to.GetNumberOfCategories());
  for (int code = 0; code < to.GetNumberOfCategories(); ++code) labels[code] = LabelOf(to, code);
  for (int code = 0; code < std::min<int>(map.size(), from.GetNumberOfCategories()); ++code) {
    std::string& label = labels[map[code]];
    if (label.empty()) label = LabelOf(from, code);
  }
  const bool any =
      std::any_of(labels.begin(), labels.end(), [](const auto& l) { return !l.empty(); });
  if (any) to.SetValueLabels(labels);
}

}  // namespace

std::vector<int> MakeCodeMap(const INBVariable& from, int codes, INBVariable& to) {
  std::vector<int> map(codes);
  std::iota(map.begin(), map.end(), 0);
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(from.GetEncoder());
  const auto* strings = dynamic_cast<const NBStringEncoder*>(from.GetEncoder());
  for (int& code : map) {
    if (numbers != nullptr && code < numbers->GetNumberOfCategories()) {
      code = static_cast<NBCatNumEncoder&>(*to.GetEncoder()).Enter(numbers->Decode(code));
    } else if (strings != nullptr && code < strings->GetNumberOfCategories()) {
      code = static_cast<NBStringEncoder&>(*to.GetEncoder()).Enter(*strings->Decode(code));
    }
  }
  if (numbers != nullptr || strings != nullptr) {
    TakeLabels(*from.GetEncoder(), map, *to.GetEncoder());
  }
  to.UpdateNumberOfCategories();
  // Codes without a value keep their numbers, for which there must be room as well.
  const int needed = map.empty() ? 0 : *std::max_element(map.begin(), map.end()) + 1;
  auto* categorical = dynamic_cast<NBCatVar*>(&to);
  if (categorical != nullptr && categorical->GetNumberOfCategories() < needed) {
    categorical->SetNumberOfCategories(needed);
  }
  return map;
}
