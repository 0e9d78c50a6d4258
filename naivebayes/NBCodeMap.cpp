#include "naivebayes/NBCodeMap.h"

#include <algorithm>
#include <numeric>

#include "naivebayes/NBCatNumEncoder.h"
#include "naivebayes/NBCatVar.h"
#include "naivebayes/NBStringEncoder.h"

std::vector<int> MakeCodeMap(const INBVariable& from, int codes, INBVariable& to) {
  std::vector<int> map(codes);
  std::iota(map.begin(), map.end(), 0);
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(from.GetEncoder());
  const auto* strings = dynamic_cast<const NBStringEncoder*>(from.GetEncoder());
  for (int& code : map) {
    int target = INBEncoder::kMissingCode;
    if (numbers != nullptr && code < numbers->GetNumberOfCategories()) {
      auto& encoder = static_cast<NBCatNumEncoder&>(*to.GetEncoder());
      target = encoder.Enter(numbers->Decode(code));
    } else if (strings != nullptr && code < strings->GetNumberOfCategories()) {
      auto& encoder = static_cast<NBStringEncoder&>(*to.GetEncoder());
      target = encoder.Enter(*strings->Decode(code));
    }
    if (target >= 0) code = target;
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
