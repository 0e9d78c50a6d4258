#include "host/command/ParamObj.h"

#include <utility>

#include "common/MCAssert.h"

namespace {

constexpr const char* kSource = "host/command/ParamObj";

}  // namespace

ParamObj::ParamObj(const ParamDescriptor& descriptor, TokenInfoObj name)
    : fpDescriptor(&descriptor), fName(std::move(name)) {}

void ParamObj::AddToken(TokenInfoObj token) { fTokens.push_back(std::move(token)); }

double ParamObj::getNumberValue() const {
  MCCommon::Assert(GetPlace().fType == TokenInfoObj::kNumber, "the value is a number", kSource);
  return GetPlace().fNumber;
}

int ParamObj::getIntegerValue() const { return static_cast<int>(getNumberValue()); }

KovaVarName ParamObj::getVarName() const { return KovaVarName(getFilePath()); }

std::string ParamObj::getFilePath() const { return fTokens.empty() ? "" : fTokens.front().fText; }

bool ParamObj::isStringValueCase(const std::string& word) const {
  return fTokens.size() == 1 && isLeadingToken(word);
}

bool ParamObj::isLeadingToken(const std::string& word) const {
  return !fTokens.empty() && fTokens.front().IsWord(word);
}

const ParamObj* ParamObj::getQualifObj(const std::string& name) const {
  for (const ParamObj& qualifier : fQualifiers) {
    if (qualifier.GetDescriptor().GetName() == name) return &qualifier;
  }
  return nullptr;
}

void ParamObj::AddQualifier(ParamObj qualifier) { fQualifiers.push_back(std::move(qualifier)); }
