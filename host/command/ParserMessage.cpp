#include "host/command/ParserMessage.h"

#include "host/command/SourcePlace.h"
#include "host/output/BpError.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/ShowText.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

using MCHost::KeyText;

ParserMessage ParserMessage::At(const TokenInfoObj& token) const {
  ParserMessage placed = *this;
  placed.fbPlaced = true;
  placed.fPlace = token;
  return placed;
}

ParserMessage ParserMessage::Expecting(std::string expectation) const {
  ParserMessage expecting = *this;
  expecting.fExpectation = std::move(expectation);
  return expecting;
}

ParserMessage ParserMessage::Nearest(std::string word) const {
  ParserMessage suggesting = *this;
  suggesting.fNearest = std::move(word);
  return suggesting;
}

std::string ParserMessage::GetTranslatedText(const std::string& key) const {
  FacSTDictionary dictionary;
  dictionary.SetProcedure(fProcedureTitle);
  return dictionary.Lookup(key);
}

void ParserMessage::UnbalancedQuote() const { Error("A quote is not closed on its line."); }

void ParserMessage::NumberOutOfRange(const std::string& number) const {
  Error("The number ^1 is too large or too close to zero to be held.", {number});
}

void ParserMessage::UnknownMacro(const std::string& name) const {
  Error("The macro !^1 has no values: no command before this one has set it.", {name});
}

void ParserMessage::UnexpectedToken(const TokenInfoObj& found) const {
  switch (found.fType) {
    case TokenInfoObj::kEnd:
      Error("The command ends too early.");
      break;
    case TokenInfoObj::kSlash:
      Error("The subcommand ends too early.");
      break;
    default:
      Error("Found ^1 where it has no meaning.", {found.Described()});
  }
}

void ParserMessage::InvalidCommand(const std::string& word) const {
  Error("There is no command \"^1\".", {word});
}

void ParserMessage::InvalidSubCom(const std::string& word) const {
  Error("^2 has no subcommand \"^1\".", {word, fCommandName});
}

void ParserMessage::InvalidParam(const std::string& word, const std::string& subCom) const {
  Error("Subcommand ^2 has no keyword \"^1\".", {word, subCom});
}

void ParserMessage::AmbiguousWord(const std::string& word) const {
  Error("\"^1\" is short for more than one keyword.", {word});
}

void ParserMessage::SubComRepeated(const std::string& subCom) const {
  Error("Subcommand ^1 is given twice.", {subCom});
}

void ParserMessage::ParamRepeated(const std::string& param, const std::string& subCom) const {
  Error("^1 is given twice.", {PlaceOf(param, subCom)});
}

void ParserMessage::SubComIncomplete(const std::string& subCom) const {
  Error("Subcommand ^1 is empty.", {subCom});
}

void ParserMessage::ParamExclusive(const std::string& param, const std::string& other,
                                   const std::string& subCom) const {
  Error("Subcommand ^3 takes either ^1 or ^2, not both.", {param, other, subCom});
}

void ParserMessage::ParamExclAnyOther(const std::string& param, const std::string& subCom) const {
  Error("^1 in subcommand ^2 goes with no other keyword.", {param, subCom});
}

void ParserMessage::InvalidParamWithWeight(const std::string& param,
                                           const std::string& subCom) const {
  Error("^1 can not be used while the cases are weighted.", {PlaceOf(param, subCom)});
}

void ParserMessage::NeedSubComForParam(const std::string& subCom, const std::string& param,
                                       const std::string& value) const {
  Error("^2=^3 needs the subcommand ^1.", {subCom, param, value});
}

void ParserMessage::WrongValueType(const std::string& param, const std::string& subCom) const {
  Error("The value of ^1 is of the wrong kind.", {PlaceOf(param, subCom)});
}

void ParserMessage::ParamNeedInteger(const std::string& param, const std::string& subCom) const {
  Error("^1 needs a whole number.", {PlaceOf(param, subCom)});
}

void ParserMessage::ParamValueBreakBdry(const std::string& value, const std::string& param,
                                        const std::string& subCom) const {
  Error("^1 is out of bounds for ^2.", {value, PlaceOf(param, subCom)});
}

void ParserMessage::InvalidParamOption(const std::string& word, const std::string& param,
                                       const std::string& subCom) const {
  Error("\"^1\" is not a value of ^2.", {word, PlaceOf(param, subCom)});
}

void ParserMessage::InvalidVarName(const std::string& name, const std::string& param,
                                   const std::string& subCom) const {
  Error("\"^1\" can not be a name for ^2.", {name, PlaceOf(param, subCom)});
}

void ParserMessage::UnknownVariable(const std::string& name) const {
  Error("There is no variable \"^1\".", {name});
}

void ParserMessage::VariableNotNumeric(const std::string& name, const std::string& param,
                                       const std::string& subCom) const {
  Error("^2 takes numeric variables only; ^1 is a string variable.",
        {name, PlaceOf(param, subCom)});
}

void ParserMessage::VariableExists(const std::string& name, const std::string& param,
                                   const std::string& subCom) const {
  Error("^2 needs a new name; there is a variable ^1 already.", {name, PlaceOf(param, subCom)});
}

void ParserMessage::VariableRangeReversed(const std::string& first, const std::string& last) const {
  Error("^1 TO ^2 is empty: ^2 comes before ^1 in the data.", {first, last});
}

void ParserMessage::OneVariableOnly(const std::string& param, const std::string& subCom) const {
  Error("^1 takes one variable.", {PlaceOf(param, subCom)});
}

void ParserMessage::CommonVariable(const std::string& name, const std::string& place,
                                   const std::string& otherPlace) const {
  Error("Variable ^1 is given in two places that exclude each other: ^2 and ^3.",
        {name, place, otherPlace});
}

void ParserMessage::VariableNoQualif(const std::string& name) const {
  Error("Nothing in parentheses may follow variable ^1.", {name});
}

void ParserMessage::VariableInvalidQualif(const std::string& name) const {
  Error("What follows variable ^1 in parentheses is not understood.", {name});
}

void ParserMessage::StringVariableNotScale(const std::string& name) const {
  Error("String variable ^1 can not be taken as scale.", {name});
}

void ParserMessage::NeedDepVarCat(const std::string& name) const {
  Error("^2 needs a categorical dependent variable; ^1 is scale.", {name, fCommandName});
}

void ParserMessage::NoTableRequested() const { Warning("The command asks for no table."); }

void ParserMessage::DisableSplit() const {
  Warning("Split-file processing is switched off for ^1.", {fCommandName});
}

void ParserMessage::RepeatedWord(const std::string& word) const {
  Warning("^1 is given twice; the second is ignored.", {word});
}

void ParserMessage::OptionIdle(const std::string& option, const std::string& because) const {
  Warning("^1 has no effect: ^2.", {option, because});
}

std::string ParserMessage::PlaceOf(const std::string& param, const std::string& subCom) {
  if (!subCom.empty()) return subCom + " " + param;
  return param.empty() ? KeyText("the dependent variable") : param;
}

void ParserMessage::Error(const std::string& key, const std::vector<std::string>& arguments) const {
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, key, arguments, Detail());
}

void ParserMessage::Warning(const std::string& key,
                            const std::vector<std::string>& arguments) const {
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, key, arguments, Detail());
}

std::string ParserMessage::Hint() const {
  const std::string expected = fExpectation.empty() ? "" : KeyText("expected ^1", {fExpectation});
  if (fNearest.empty()) return expected;
  const std::string nearest = KeyText("did you mean \"^1\"?", {fNearest});
  return expected.empty() ? nearest : KeyText("^1; ^2", {expected, nearest});
}

std::string ParserMessage::Detail() const {
  const std::string hint = Hint();
  if (!fbPlaced) return hint;
  const std::string place =
      KeyText("line ^1, column ^2", {std::to_string(fPlace.fLine), std::to_string(fPlace.fColumn)});
  return (hint.empty() ? place : KeyText("^1: ^2", {place, hint})) + "\n" +
         MCHost::ShowPlace(MCHost::CurrentSession().CommandText(), fPlace.fOffset);
}
