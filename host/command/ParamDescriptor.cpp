#include "host/command/ParamDescriptor.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "host/output/ShowText.h"
#include "host/text/KeywordMatch.h"

using MCHost::KeyText;

ParamDescriptor::ParamDescriptor(std::string name, Kind kind, std::string help)
    : fName(std::move(name)), fKind(kind), fHelp(std::move(help)) {}

ParamDescriptor& ParamDescriptor::setForm(Form form) {
  fForm = form;
  return *this;
}

ParamDescriptor& ParamDescriptor::setLowerBoundary(double bound, LowerBdryOptions option) {
  fLowerBoundary = bound;
  fLowerOption = option;
  return *this;
}

ParamDescriptor& ParamDescriptor::setUpperBoundary(double bound, UpperBdryOptions option) {
  fUpperBoundary = bound;
  fUpperOption = option;
  return *this;
}

ParamDescriptor& ParamDescriptor::addStringValue(std::string value) {
  fStringValues.push_back(std::move(value));
  return *this;
}

ParamDescriptor& ParamDescriptor::setQualifOption(QualifOption option) {
  fQualifOption = option;
  return *this;
}

ParamDescriptor& ParamDescriptor::addQualifDesc(ParamDescriptor qualifier) {
  fQualifDescs.push_back(std::move(qualifier));
  return *this;
}

ParamDescriptor& ParamDescriptor::setDefault(double value) {
  fDefaultNumber = value;
  fDefaultText = fmt::format("{}", value);
  return *this;
}

ParamDescriptor& ParamDescriptor::setDefault(std::string value) {
  fDefaultText = std::move(value);
  return *this;
}

bool ParamDescriptor::IsInBounds(double value) const {
  if (std::isnan(value)) return false;
  const bool aboveLower =
      fLowerOption == kNoLowerBdry ||
      (fLowerOption == kLowerInclusive ? value >= fLowerBoundary : value > fLowerBoundary);
  const bool belowUpper =
      fUpperOption == kNoUpperBdry ||
      (fUpperOption == kUpperInclusive ? value <= fUpperBoundary : value < fUpperBoundary);
  return aboveLower && belowUpper;
}

std::string ParamDescriptor::BoundsText() const {
  const auto bound = [](const char* key, double value) {
    return KeyText(key, {fmt::format("{}", value)});
  };
  std::string lower;
  std::string upper;
  if (fLowerOption == kLowerInclusive) lower = bound("at least ^1", fLowerBoundary);
  if (fLowerOption == kLowerExclusive) lower = bound("above ^1", fLowerBoundary);
  if (fUpperOption == kUpperInclusive) upper = bound("at most ^1", fUpperBoundary);
  if (fUpperOption == kUpperExclusive) upper = bound("below ^1", fUpperBoundary);
  if (lower.empty() || upper.empty()) return lower + upper;
  return KeyText("^1 and ^2", {lower, upper});
}

std::string ParamDescriptor::Expectation() const {
  const std::string words = MCHost::JoinAlternatives(fStringValues);
  switch (fKind) {
    case kFlag:
      return "";
    case kNumber:
      return NumberExpectation("a number", words);
    case kInteger:
      return NumberExpectation("a whole number", words);
    case kKeyword:
      return words;
    case kKeywordList:
      return KeyText("one or more of ^1", {words});
    case kName:
      return KeyText("a name");
    case kVariable:
      return KeyText("a variable name");
    case kVariableList:
      return KeyText("variable names");
    case kNewName:
      return KeyText("a name for a new variable");
    case kNewNames:
      return KeyText("a root name, a colon and a count");
    case kFile:
      return KeyText("a file name in quotes");
  }
  return "";
}

std::string ParamDescriptor::NumberExpectation(const char* what, const std::string& words) const {
  const bool isAt = fLowerOption == kLowerInclusive ||
                    (fLowerOption == kNoLowerBdry && fUpperOption == kUpperInclusive);
  const std::string bounds = BoundsText();
  std::string text = KeyText(what);
  if (!bounds.empty()) text = KeyText(isAt ? "^1 of ^2" : "^1 ^2", {text, bounds});
  return words.empty() ? text : KeyText("^1, or ^2", {text, words});
}
