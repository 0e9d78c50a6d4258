#include "modelfiles/StateDictionary.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

#include "common/state/StateFields.h"

namespace {

constexpr int kLeastVariable = 29;  // bytes of a variable without any text

template <class Value>
std::vector<int> EnterAll(const std::vector<Value>& from, std::vector<Value>& into) {
  std::map<Value, int> codes;
  for (std::size_t i = 0; i < into.size(); ++i) codes.emplace(into[i], static_cast<int>(i));
  std::vector<int> found;
  for (const Value& value : from) {
    const auto [at, isNew] = codes.emplace(value, static_cast<int>(into.size()));
    if (isNew) into.push_back(value);
    found.push_back(at->second);
  }
  return found;
}

template <class Value>
bool AreDistinct(const std::vector<Value>& values) {
  return std::set<Value>(values.begin(), values.end()).size() == values.size();
}

}  // namespace

std::string StateVariable::GetCategoryText(int code) const {
  const auto place = static_cast<std::size_t>(code);
  if (!fbNumeric) return fStrings[place];
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, fNumbers[place]).ptr};
}

bool StateVariable::IsLess(int code, int other) const {
  const auto left = static_cast<std::size_t>(code);
  const auto right = static_cast<std::size_t>(other);
  return fbNumeric ? fNumbers[left] < fNumbers[right] : fStrings[left] < fStrings[right];
}

std::vector<int> StateVariable::CodesOf(const StateVariable& other) {
  return fbNumeric ? EnterAll(other.fNumbers, fNumbers) : EnterAll(other.fStrings, fStrings);
}

template <class Archive, class Self>
void StateVariable::Fields(Archive& archive, Self& self) {
  archive.Text(self.fName);
  archive.Text(self.fLabel);
  archive.Flag(self.fbCategorical);
  archive.Flag(self.fbNumeric);
  StateDoubles(archive, self.fNumbers);
  StateTexts(archive, self.fStrings);
  archive.Check(AreDistinct(self.fNumbers) && AreDistinct(self.fStrings));
}

template <class Archive, class Self>
void StateDictionary::Fields(Archive& archive, Self& self) {
  archive.Flag(self.fbScreening);
  archive.Flag(self.fbExcludeUserMissing);
  archive.Text(self.fWeight);
  archive.Object(self.fTarget);
  archive.Size(self.fPredictors, kLeastVariable);
  for (auto& predictor : self.fPredictors) archive.Object(predictor);
}

MC_STATE_OPERATIONS(StateVariable, "PSVAR", "StateVariable")
MC_STATE_OPERATIONS(StateDictionary, "PSDICT 1.00", "StateDictionary 1.00")
