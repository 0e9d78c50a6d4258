#include "host/command/ParamDescriptor.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "host/text/KeywordMatch.h"

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
  std::string text;
  if (fLowerOption != kNoLowerBdry) {
    text = fmt::format("{} {}", fLowerOption == kLowerInclusive ? "at least" : "above",
                       fLowerBoundary);
  }
  if (fUpperOption != kNoUpperBdry) {
    text += fmt::format("{}{} {}", text.empty() ? "" : " and ",
                        fUpperOption == kUpperInclusive ? "at most" : "below", fUpperBoundary);
  }
  return text;
}

std::string ParamDescriptor::Expectation() const {
  static constexpr const char* kWhat[] = {"",
                                          "a number",
                                          "a whole number",
                                          "",
                                          "one or more of ",
                                          "a name",
                                          "a variable name",
                                          "variable names",
                                          "a name for a new variable",
                                          "a root name, a colon and a count",
                                          "a file name in quotes"};
  std::string text = kWhat[fKind];
  const std::string bounds = BoundsText();
  if (!bounds.empty()) text += (bounds.starts_with("at") ? " of " : " ") + bounds;
  const std::string words = MCHost::JoinAlternatives(fStringValues);
  if (words.empty()) return text;
  const bool insteadOfNumber = fKind == kNumber || fKind == kInteger;
  return text + (insteadOfNumber ? ", or " : "") + words;
}
