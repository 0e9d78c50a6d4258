#include "host/command/UniversalParser.h"

#include <algorithm>
#include <string>

#include "host/command/ValueParser.h"
#include "host/text/KeywordMatch.h"

using MCHost::JoinAlternatives;
using MCHost::KeywordMatch;
using MCHost::MatchKeyword;
using MCHost::NearestWord;
using MCHost::TokenCursor;

namespace {

// The names that can stand before a value, or alone.
std::vector<std::string> NamesToType(const SubComDescriptor& subCom) {
  std::vector<std::string> names;
  for (const ParamDescriptor& param : subCom.GetParams()) {
    if (param.GetForm() != ParamDescriptor::kBare) names.push_back(param.GetName());
  }
  return names;
}

// Moves to the next word that begins a parameter, or would if it were known, so that reading can go
// on after an error. What is left in the parentheses of the error belongs to it.
void SkipToParam(TokenCursor& cursor, const SubComDescriptor& subCom) {
  const std::vector<std::string> names = NamesToType(subCom);
  while (!cursor.AtEnd()) {
    const TokenInfoObj& token = cursor.Peek();
    const bool isKnown = MatchKeyword(token.fText, names).fResult == KeywordMatch::kFound;
    const bool isName = token.fType == TokenInfoObj::kWord && !cursor.IsInParentheses();
    if (isName && (isKnown || cursor.Is(TokenInfoObj::kEquals, 1))) return;
    cursor.Take();
  }
}

}  // namespace

UniversalParser::UniversalParser(TokenSequenceBase& tokens, CommandSpec& specification,
                                 const CommandDescriptor& descriptor)
    : fTokens(tokens.GetTokens()), fSpecification(specification), fDescriptor(descriptor) {
  fMessages.SetCommandName(descriptor.GetName());
}

bool UniversalParser::getCommandSpecifications() {
  if (!ReportBadTokens() || !CheckCommandWord()) return false;
  bool isValid = true;
  for (std::size_t begin = 0; begin + 1 < fTokens.size();) {
    std::size_t end = begin + 1;
    while (fTokens[end].fType != TokenInfoObj::kSlash && fTokens[end].fType != TokenInfoObj::kEnd) {
      ++end;
    }
    isValid = ParseSubCom(begin, end) && isValid;
    begin = end;
  }
  return isValid;
}

bool UniversalParser::ReportBadTokens() const {
  bool isValid = true;
  for (const TokenInfoObj& token : fTokens) {
    const ParserMessage messages = fMessages.At(token);
    switch (token.fProblem) {
      case TokenInfoObj::kNone:
        continue;
      case TokenInfoObj::kUnbalancedQuote:
        messages.UnbalancedQuote();
        break;
      case TokenInfoObj::kNumberRange:
        messages.NumberOutOfRange(token.fText);
        break;
      case TokenInfoObj::kUnknownMacro:
        messages.UnknownMacro(token.fText);
        break;
    }
    isValid = false;
  }
  return isValid;
}

bool UniversalParser::CheckCommandWord() const {
  const TokenInfoObj& word = fTokens.front();
  const std::vector<std::string> names{fDescriptor.GetName()};
  if (word.fType == TokenInfoObj::kWord &&
      MatchKeyword(word.fText, names).fResult == KeywordMatch::kFound) {
    return true;
  }
  fMessages.At(word)
      .Expecting(JoinAlternatives(fDescriptor.GetKnownCommands()))
      .Nearest(NearestWord(word.fText, fDescriptor.GetKnownCommands()))
      .InvalidCommand(word.fText);
  return false;
}

// `begin` is the command word or a slash.
bool UniversalParser::ParseSubCom(std::size_t begin, std::size_t end) {
  const bool isNamed = fTokens[begin].fType == TokenInfoObj::kSlash;
  const TokenInfoObj& name = fTokens[isNamed ? begin + 1 : begin];
  const SubComDescriptor* descriptor =
      isNamed ? FindSubCom(name) : &fDescriptor.GetSubComs().front();
  if (descriptor == nullptr) return false;
  if (fSpecification.getSubComObj(descriptor->GetName()) != nullptr) {
    fMessages.At(name).SubComRepeated(descriptor->GetName());
    return false;
  }
  SubComObj subCom(*descriptor, name);
  TokenCursor cursor(fTokens, std::min(begin + (isNamed ? 2 : 1), end), end);
  const bool isValid = ParseParams(cursor, subCom);
  if (isValid && subCom.getParamListSize() == 0) {
    fMessages.At(fTokens[end])
        .Expecting(JoinAlternatives(NamesToType(*descriptor)))
        .SubComIncomplete(descriptor->GetName());
    return false;
  }
  fSpecification.AddSubCom(subCom);
  return isValid;
}

const SubComDescriptor* UniversalParser::FindSubCom(const TokenInfoObj& name) const {
  std::vector<std::string> names;
  for (const SubComDescriptor& subCom : fDescriptor.GetSubComs()) {
    if (!subCom.GetName().empty()) names.push_back(subCom.GetName());
  }
  const ParserMessage messages = fMessages.At(name).Expecting(JoinAlternatives(names));
  if (name.fType != TokenInfoObj::kWord) {
    messages.UnexpectedToken(name);
    return nullptr;
  }
  const KeywordMatch match = MatchKeyword(name.fText, names);
  if (match.fResult == KeywordMatch::kFound) return fDescriptor.FindSubCom(names[match.fIndex]);
  if (match.fResult == KeywordMatch::kAmbiguous) {
    messages.AmbiguousWord(name.fText);
  } else {
    messages.Nearest(NearestWord(name.fText, names)).InvalidSubCom(name.fText);
  }
  return nullptr;
}

bool UniversalParser::ParseParams(TokenCursor& cursor, SubComObj& subCom) const {
  bool isValid = ParseBareParams(cursor, subCom);
  if (!isValid) SkipToParam(cursor, subCom.GetDescriptor());
  while (!cursor.AtEnd()) {
    if (ParseParam(cursor, subCom)) continue;
    isValid = false;
    SkipToParam(cursor, subCom.GetDescriptor());
  }
  return isValid;
}

bool UniversalParser::ParseBareParams(TokenCursor& cursor, SubComObj& subCom) const {
  MCHost::ValueParser values(cursor, subCom.GetDescriptor(), fMessages);
  for (const ParamDescriptor& descriptor : subCom.GetDescriptor().GetParams()) {
    if (descriptor.GetForm() != ParamDescriptor::kBare) continue;
    ParamObj param(descriptor, cursor.Peek());
    if (!values.Parse(param)) return false;
    subCom.AddParam(param);
  }
  return true;
}

bool UniversalParser::ParseParam(TokenCursor& cursor, SubComObj& subCom) const {
  const TokenInfoObj& name = cursor.Take();
  const SubComDescriptor& subComDescriptor = subCom.GetDescriptor();
  const ParamDescriptor* descriptor = FindParam(name, subComDescriptor);
  if (descriptor == nullptr) return false;
  ParamObj param(*descriptor, name);
  MCHost::ValueParser values(cursor, subComDescriptor, fMessages);
  if (!values.Parse(param)) return false;
  if (subCom.getParamObj(descriptor->GetName()) != nullptr) {
    fMessages.At(name).ParamRepeated(descriptor->GetName(), subComDescriptor.GetName());
    return false;
  }
  subCom.AddParam(param);
  return true;
}

const ParamDescriptor* UniversalParser::FindParam(const TokenInfoObj& name,
                                                  const SubComDescriptor& subCom) const {
  const std::vector<std::string> names = NamesToType(subCom);
  const ParserMessage messages = fMessages.At(name).Expecting(JoinAlternatives(names));
  if (name.fType != TokenInfoObj::kWord || subCom.GetName().empty()) {
    // Only whole words lead the lists of the unnamed subcommand: anything else is a misplaced name.
    const auto led = std::find_if(names.begin(), names.end(),
                                  [&name](const std::string& known) { return name.IsWord(known); });
    if (led != names.end()) return subCom.FindParam(*led);
    messages.UnexpectedToken(name);
    return nullptr;
  }
  const KeywordMatch match = MatchKeyword(name.fText, names);
  if (match.fResult == KeywordMatch::kFound) return subCom.FindParam(names[match.fIndex]);
  if (match.fResult == KeywordMatch::kAmbiguous) {
    messages.AmbiguousWord(name.fText);
  } else {
    messages.Nearest(NearestWord(name.fText, names)).InvalidParam(name.fText, subCom.GetName());
  }
  return nullptr;
}
