#include "host/command/ValueParser.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "host/text/KeywordMatch.h"

namespace MCHost {

using Kind = ParamDescriptor::Kind;

bool ValueParser::Parse(ParamObj& param) {
  const ParamDescriptor& descriptor = param.GetDescriptor();
  switch (descriptor.GetKind()) {
    case Kind::kFlag:
      return true;
    case Kind::kKeywordList:
      return !fCursor.Is(TokenInfoObj::kLeftParen) || ParseKeywordList(param);
    case Kind::kNewName:
    case Kind::kNewNames:
      return !fCursor.Is(TokenInfoObj::kLeftParen) || ParseNewNames(param);
    default:
      break;
  }
  if (descriptor.GetForm() == ParamDescriptor::kNamed && !Expect(TokenInfoObj::kEquals, "=")) {
    return false;
  }
  return ParseNamedValue(param) && ParseQualifiers(param);
}

bool ValueParser::ParseNamedValue(ParamObj& param) {
  switch (param.GetDescriptor().GetKind()) {
    case Kind::kNumber:
    case Kind::kInteger:
      return ParseNumber(param);
    case Kind::kKeyword:
      return ParseKeyword(param);
    case Kind::kFile:
      return ParseFile(param);
    case Kind::kName:
      return ParseName(param);
    default:
      return ParseVariables(param);
  }
}

bool ValueParser::ParseNumber(ParamObj& param) {
  const ParamDescriptor& descriptor = param.GetDescriptor();
  if (fCursor.Is(TokenInfoObj::kWord) && !descriptor.GetStringValues().empty()) {
    return TakeKeyword(param);
  }
  if (!fCursor.Is(TokenInfoObj::kNumber)) return Fail(param);
  const TokenInfoObj& token = fCursor.Take();
  const ParserMessage messages = fMessages.At(token).Expecting(descriptor.Expectation());
  const bool needsWhole = descriptor.GetKind() == Kind::kInteger;
  if (needsWhole && std::floor(token.fNumber) != token.fNumber) {
    messages.ParamNeedInteger(descriptor.GetName(), fSubCom.GetName());
    return false;
  }
  const bool fits = !needsWhole || std::abs(token.fNumber) <= std::numeric_limits<int>::max();
  if (!fits || !descriptor.IsInBounds(token.fNumber)) {
    messages.ParamValueBreakBdry(token.fText, descriptor.GetName(), fSubCom.GetName());
    return false;
  }
  param.AddToken(token);
  return true;
}

bool ValueParser::ParseKeyword(ParamObj& param) {
  return fCursor.Is(TokenInfoObj::kWord) ? TakeKeyword(param) : Fail(param);
}

// Takes a word as one of the string values and keeps it spelled in full.
bool ValueParser::TakeKeyword(ParamObj& param) {
  const ParamDescriptor& descriptor = param.GetDescriptor();
  TokenInfoObj token = fCursor.Take();
  const KeywordMatch match = MatchKeyword(token.fText, descriptor.GetStringValues());
  const ParserMessage messages = fMessages.At(token).Expecting(descriptor.Expectation());
  if (match.fResult == KeywordMatch::kAmbiguous) {
    messages.AmbiguousWord(token.fText);
    return false;
  }
  if (match.fResult == KeywordMatch::kUnknown) {
    messages.Nearest(NearestWord(token.fText, descriptor.GetStringValues()))
        .InvalidParamOption(token.fText, descriptor.GetName(), fSubCom.GetName());
    return false;
  }
  token.fText = descriptor.GetStringValues()[match.fIndex];
  for (const TokenInfoObj& earlier : param.getTokenList()) {
    if (earlier.fText != token.fText) continue;
    fMessages.At(token).RepeatedWord(token.fText);
    return true;
  }
  param.AddToken(token);
  return true;
}

bool ValueParser::ParseKeywordList(ParamObj& param) {
  fCursor.Take();
  bool isValid = true;
  do {
    if (!fCursor.Is(TokenInfoObj::kWord)) return Fail(param);
    isValid = TakeKeyword(param) && isValid;
  } while (!fCursor.Is(TokenInfoObj::kRightParen));
  fCursor.Take();
  return isValid;
}

bool ValueParser::ParseName(ParamObj& param) {
  if (!fCursor.Peek().IsName()) return Fail(param);
  param.AddToken(fCursor.Take());
  return true;
}

bool ValueParser::ParseFile(ParamObj& param) {
  const bool isQuoted = fCursor.Is(TokenInfoObj::kString) || fCursor.Is(TokenInfoObj::kQuotedName);
  if (!isQuoted || fCursor.Peek().fText.empty()) return Fail(param);
  param.AddToken(fCursor.Take());
  return true;
}

// In parentheses, up to two tokens with a colon between. What each may be is the procedure's to
// say.
bool ValueParser::ParseNewNames(ParamObj& param) {
  fCursor.Take();
  const bool hasCount = param.GetDescriptor().GetKind() == Kind::kNewNames;
  do {
    const bool isValue = fCursor.Peek().IsName() || (hasCount && fCursor.Is(TokenInfoObj::kNumber));
    if (!isValue) return Fail(param);
    param.AddToken(fCursor.Take());
  } while (hasCount && param.getTokenList().size() < 2 && fCursor.Accept(TokenInfoObj::kColon));
  return Expect(TokenInfoObj::kRightParen, ")");
}

// True where a list of variables ends: at the end, at the next parameter's name.
bool ValueParser::IsListEnd() const {
  if (fCursor.AtEnd()) return true;
  if (!fCursor.Is(TokenInfoObj::kWord)) return false;
  if (fCursor.Is(TokenInfoObj::kEquals, 1)) return true;
  for (const ParamDescriptor& param : fSubCom.GetParams()) {
    if (param.GetForm() == ParamDescriptor::kLed && fCursor.Peek().IsWord(param.GetName())) {
      return true;
    }
  }
  return false;
}

bool ValueParser::ParseVariables(ParamObj& param) {
  const bool isList = param.GetDescriptor().GetKind() == Kind::kVariableList;
  if (IsListEnd()) return Fail(param);
  bool isValid = true;
  do {
    if (fCursor.Peek().IsName() || fCursor.Is(TokenInfoObj::kEmptyMacro)) {
      param.AddToken(fCursor.Take());
    } else if (fCursor.Is(TokenInfoObj::kLeftParen) && !param.getTokenList().empty()) {
      isValid = ParseVariableQualifier(param) && isValid;
    } else {
      isValid = Fail(param);
      fCursor.Take();
    }
  } while (!IsListEnd() && (isList || fCursor.Is(TokenInfoObj::kLeftParen)));
  return isValid;
}

// Keeps what stands in parentheses behind a variable as it is.
bool ValueParser::ParseVariableQualifier(ParamObj& param) {
  while (!fCursor.AtEnd() && !fCursor.Is(TokenInfoObj::kRightParen)) {
    param.AddToken(fCursor.Take());
  }
  if (fCursor.AtEnd()) return Expect(TokenInfoObj::kRightParen, ")");
  param.AddToken(fCursor.Take());
  return true;
}

bool ValueParser::ParseQualifiers(ParamObj& param) {
  const ParamDescriptor& descriptor = param.GetDescriptor();
  if (descriptor.GetQualifOption() == ParamDescriptor::kNoQualif ||
      descriptor.GetKind() == Kind::kVariable || !fCursor.Accept(TokenInfoObj::kLeftParen)) {
    return true;
  }
  do {
    if (!ParseQualifier(param)) return false;
  } while (!fCursor.Is(TokenInfoObj::kRightParen));
  fCursor.Take();
  return true;
}

bool ValueParser::ParseQualifier(ParamObj& param) {
  std::vector<std::string> names;
  for (const ParamDescriptor& known : param.GetDescriptor().GetQualifDescs()) {
    names.push_back(known.GetName());
  }
  const TokenInfoObj& name = fCursor.Peek();
  const KeywordMatch match =
      name.fType == TokenInfoObj::kWord ? MatchKeyword(name.fText, names) : KeywordMatch();
  if (match.fResult != KeywordMatch::kFound) {
    fMessages.At(name)
        .Expecting(JoinAlternatives(names))
        .Nearest(NearestWord(name.fText, names))
        .UnexpectedToken(name);
    return false;
  }
  const ParamDescriptor& descriptor = param.GetDescriptor().GetQualifDescs()[match.fIndex];
  if (param.getQualifObj(descriptor.GetName()) != nullptr) {
    fMessages.At(name).ParamRepeated(descriptor.GetName(), fSubCom.GetName());
    return false;
  }
  ParamObj qualifier(descriptor, fCursor.Take());
  if (!Expect(TokenInfoObj::kEquals, "=") || !ParseNamedValue(qualifier)) return false;
  param.AddQualifier(qualifier);
  return true;
}

bool ValueParser::Expect(TokenInfoObj::Type type, const char* sign) {
  if (fCursor.Accept(type)) return true;
  fMessages.At(fCursor.Peek())
      .Expecting(std::string("\"") + sign + "\"")
      .UnexpectedToken(fCursor.Peek());
  return false;
}

// The current token can not be (part of) the value.
bool ValueParser::Fail(const ParamObj& param) {
  const ParamDescriptor& descriptor = param.GetDescriptor();
  const TokenInfoObj& found = fCursor.Peek();
  const ParserMessage messages = fMessages.At(found).Expecting(descriptor.Expectation());
  if (fCursor.AtEnd() || descriptor.GetForm() != ParamDescriptor::kNamed) {
    messages.UnexpectedToken(found);
  } else {
    messages.WrongValueType(descriptor.GetName(), fSubCom.GetName());
  }
  return false;
}

}  // namespace MCHost
