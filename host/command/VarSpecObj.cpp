#include "host/command/VarSpecObj.h"

#include <algorithm>

#include "common/MCAssert.h"
#include "host/output/ShowText.h"
#include "host/text/KeywordMatch.h"

namespace {

constexpr const char* kSource = "host/command/VarSpecObj";
constexpr const char* kTo = "TO";
constexpr const char* kAll = "ALL";

// A root is tried with this many endings before it is given up.
constexpr int kMaxRootEndings = 1000;

KovaVarName Numbered(const KovaVarName& root, int number) {
  return KovaVarName(root.GetName() + "_" + std::to_string(number));
}

}  // namespace

VarSpecObj::VarSpecObj(const std::string& subCom, const std::string& param,
                       const CommandDescriptor& command, const KOVA_DataSource& source,
                       bool numericOnly)
    : fSubCom(subCom), fParam(param), fSource(source), fbNumericOnly(numericOnly) {
  fMessages.SetCommandName(command.GetName());
}

bool VarSpecObj::ValidateVariable(const ParamObj& param) {
  Clear();
  NameList list{param.getTokenList()};
  MCCommon::Assert(list.Peek() != nullptr, "a variable has a token", kSource);
  if (!list.Peek()->IsName() || list.Peek()->IsWord(kAll)) {
    fMessages.At(param.GetPlace()).OneVariableOnly(fParam, fSubCom);
    return false;
  }
  const bool isValid = TakeName(list);
  if (list.Peek() == nullptr) return isValid;
  MCCommon::Assert(list.Peek()->fType == TokenInfoObj::kLeftParen,
                   "behind a variable stands what qualifies it", kSource);
  return TakeQualifier(param) && isValid;
}

bool VarSpecObj::ValidateVariable(int index) {
  Clear();
  return index >= 0 && index < fSource.ColumnCount() && Add(index, TokenInfoObj());
}

bool VarSpecObj::ValidateVariables(const ParamObj* param) {
  Clear();
  if (param == nullptr) {
    if (fbAllByDefault) TakeAll(TokenInfoObj());
    return true;
  }
  bool isValid = true;
  for (NameList list{param->getTokenList()}; list.Peek() != nullptr;) {
    isValid = TakeItem(list) && isValid;
  }
  return isValid;
}

// One name, range, ALL, or empty macro.
bool VarSpecObj::TakeItem(NameList& list) {
  const TokenInfoObj& token = *list.Peek();
  if (token.fType == TokenInfoObj::kEmptyMacro) {
    ++list.fIndex;
    return true;
  }
  if (token.fType == TokenInfoObj::kLeftParen) {
    fMessages.At(token).VariableNoQualif(list.fTokens[list.fIndex - 1].fText);
    while (list.Peek()->fType != TokenInfoObj::kRightParen) ++list.fIndex;
    ++list.fIndex;
    return false;
  }
  if (token.IsWord(kAll)) {
    ++list.fIndex;
    TakeAll(token);
    return true;
  }
  const TokenInfoObj* next = list.Peek(1);
  return next != nullptr && next->IsWord(kTo) ? TakeRange(list) : TakeName(list);
}

bool VarSpecObj::TakeName(NameList& list) {
  const TokenInfoObj& token = *list.Peek();
  ++list.fIndex;
  if (token.fType == TokenInfoObj::kWord && KovaVarName::IsReserved(token.fText)) {
    fMessages.At(token).Expecting(MCHost::KeyText("a variable name")).UnexpectedToken(token);
    return false;
  }
  const int variable = Resolve(token);
  return variable >= 0 && Add(variable, token);
}

bool VarSpecObj::TakeRange(NameList& list) {
  const TokenInfoObj& first = *list.Peek();
  const TokenInfoObj& to = *list.Peek(1);
  const TokenInfoObj* last = list.Peek(2);
  if (last == nullptr || !last->IsName()) {
    list.fIndex += 2;
    fMessages.At(to)
        .Expecting(MCHost::KeyText("a variable name on either side"))
        .UnexpectedToken(to);
    return false;
  }
  list.fIndex += 3;
  const int from = Resolve(first);
  const int upTo = Resolve(*last);
  if (from < 0 || upTo < 0) return false;
  if (upTo < from) {
    fMessages.At(first).VariableRangeReversed(first.fText, last->fText);
    return false;
  }
  bool isValid = true;
  for (int variable = from; variable <= upTo; ++variable) {
    isValid = Add(variable, first) && isValid;
  }
  return isValid;
}

void VarSpecObj::TakeAll(const TokenInfoObj& place) {
  for (int variable = 0; variable < fSource.ColumnCount(); ++variable) {
    const bool isLeftOut = std::find(fLeftOut.begin(), fLeftOut.end(), variable) != fLeftOut.end();
    const bool fits = !fbNumericOnly || fSource.GetVariable(variable).IsNumeric();
    if (isLeftOut || !fits || Holds(variable)) continue;
    fVariables.push_back(variable);
    fPlaces.push_back(place);
  }
}

// What stands behind the variable must be "( NAME = VALUE )" as declared.
bool VarSpecObj::TakeQualifier(const ParamObj& param) {
  const std::vector<TokenInfoObj>& tokens = param.getTokenList();
  const std::string& variable = tokens.front().fText;
  if (!fbAllowQualifiers) {
    fMessages.At(tokens[1]).VariableNoQualif(variable);
    return false;
  }
  for (const ParamDescriptor& known : param.GetDescriptor().GetQualifDescs()) {
    const bool isShaped = tokens.size() == 6 && tokens[2].fType == TokenInfoObj::kWord &&
                          tokens[3].fType == TokenInfoObj::kEquals &&
                          tokens[4].fType == TokenInfoObj::kWord;
    if (!isShaped) break;
    const auto name = MCHost::MatchKeyword(tokens[2].fText, {known.GetName()});
    const auto value = MCHost::MatchKeyword(tokens[4].fText, known.GetStringValues());
    if (name.fResult != MCHost::KeywordMatch::kFound) continue;
    if (value.fResult != MCHost::KeywordMatch::kFound) break;
    fQualifierValue = known.GetStringValues()[value.fIndex];
    return true;
  }
  std::string expected;
  for (const ParamDescriptor& known : param.GetDescriptor().GetQualifDescs()) {
    expected += "(" + known.GetName() + "=" + known.Expectation() + ")";
  }
  fMessages.At(tokens[1]).Expecting(expected).VariableInvalidQualif(variable);
  return false;
}

bool VarSpecObj::CheckCommonVars(const VarSpecObj& other) const {
  bool isValid = true;
  for (const int variable : fVariables) {
    if (!other.Holds(variable)) continue;
    const bool wasTyped = GetPlace(variable).fType != TokenInfoObj::kEnd;
    const TokenInfoObj& place = wasTyped ? GetPlace(variable) : other.GetPlace(variable);
    const ParserMessage messages =
        place.fType == TokenInfoObj::kEnd ? fMessages : fMessages.At(place);
    messages.CommonVariable(fSource.GetVariable(variable).GetName(),
                            ParserMessage::PlaceOf(fParam, fSubCom),
                            ParserMessage::PlaceOf(other.fParam, other.fSubCom));
    isValid = false;
  }
  return isValid;
}

bool VarSpecObj::CheckNewVariable(const ParamObj& param) const {
  const KovaVarName name = param.getVarName();
  const ParserMessage messages = fMessages.At(param.GetPlace());
  if (!name.IsValid()) {
    messages.InvalidVarName(name.GetName(), fParam, fSubCom);
    return false;
  }
  if (fSource.FindVariable(name.GetName()) >= 0) {
    messages.VariableExists(name.GetName(), fParam, fSubCom);
    return false;
  }
  return true;
}

bool VarSpecObj::CheckRoot(const TokenInfoObj& root) const {
  if (Numbered(KovaVarName(root.fText), kMaxRootEndings).IsValid() && !root.fText.empty()) {
    return true;
  }
  fMessages.At(root).InvalidVarName(root.fText, fParam, fSubCom);
  return false;
}

bool VarSpecObj::NewVarNameByRoot(const KovaVarName& root, KovaVarName& name) const {
  name = root;
  for (int ending = 1; !AreAllNew({name}); ++ending) {
    if (ending > kMaxRootEndings) return false;
    name = Numbered(root, ending);
  }
  return name.IsValid();
}

bool VarSpecObj::NewVarNamesByRoot(const KovaVarName& root, int count,
                                   std::vector<KovaVarName>& names) const {
  for (int ending = 0; ending <= kMaxRootEndings; ++ending) {
    const KovaVarName stem = ending == 0 ? root : Numbered(root, ending);
    names.clear();
    for (int i = 1; i <= count; ++i) names.push_back(Numbered(stem, i));
    if (!AreAllNew(names)) continue;
    return std::all_of(names.begin(), names.end(),
                       [](const KovaVarName& name) { return name.IsValid(); });
  }
  return false;
}

bool VarSpecObj::AreAllNew(const std::vector<KovaVarName>& names) const {
  return std::none_of(names.begin(), names.end(), [this](const KovaVarName& name) {
    return fSource.FindVariable(name.GetName()) >= 0;
  });
}

const TokenInfoObj& VarSpecObj::GetPlace(int variable) const {
  const auto found = std::find(fVariables.begin(), fVariables.end(), variable);
  MCCommon::Assert(found != fVariables.end(), "the role holds the variable", kSource);
  return fPlaces[static_cast<std::size_t>(found - fVariables.begin())];
}

void VarSpecObj::Clear() {
  fVariables.clear();
  fPlaces.clear();
  fQualifierValue.clear();
}

bool VarSpecObj::Add(int variable, const TokenInfoObj& place) {
  const KOVA_Variable& found = fSource.GetVariable(variable);
  const ParserMessage messages =
      place.fType == TokenInfoObj::kEnd ? fMessages : fMessages.At(place);
  if (fbNumericOnly && !found.IsNumeric()) {
    messages.VariableNotNumeric(found.GetName(), fParam, fSubCom);
    return false;
  }
  if (Holds(variable)) {
    messages.RepeatedWord(found.GetName());
    return true;
  }
  fVariables.push_back(variable);
  fPlaces.push_back(place);
  return true;
}

// The variable's index, or -1 after a message.
int VarSpecObj::Resolve(const TokenInfoObj& name) const {
  const int variable = fSource.FindVariable(name.fText);
  if (variable >= 0) return variable;
  std::vector<std::string> known;
  known.reserve(static_cast<std::size_t>(fSource.ColumnCount()));
  for (int i = 0; i < fSource.ColumnCount(); ++i) known.push_back(fSource.GetVariable(i).GetName());
  fMessages.At(name).Nearest(MCHost::NearestWord(name.fText, known)).UnknownVariable(name.fText);
  return -1;
}

bool VarSpecObj::Holds(int variable) const {
  return std::find(fVariables.begin(), fVariables.end(), variable) != fVariables.end();
}
