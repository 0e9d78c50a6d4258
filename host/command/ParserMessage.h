// What is said to the author of a command: one method a message.
//
// Every message is a sentence with the words at fault in it, raised as a warning or an error (an
// error also sets the host's error flag). A message that knows its place shows it below the text:
// line and column, what was expected there, the nearest known word, and the user's own line with a
// caret. Place and expectation are added in front of the message:
//
//   messages.At(token).Expecting("ON or OFF").InvalidParamOption("ONN", "STATUS", "SCREENING");
//
// The unnamed subcommand is given as an empty name. Parameters named `param` and `subCom` are names
// of the grammar. REQUIRES, for every message: a session is installed for this thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/command/TokenInfoObj.h"

class ParserMessage {
 public:
  ParserMessage() = default;

  // The command that the messages speak of.
  void SetCommandName(std::string name) { fCommandName = std::move(name); }

  // The procedure whose part of the string table is looked into first.
  void SetProcedureTitle(std::string title) { fProcedureTitle = std::move(title); }

  // The displayed text of a key of the string table, its placeholders unfilled; the key itself when
  // the table has none. Needs no session.
  std::string GetTranslatedText(const std::string& key) const;

  // These messages with a place, an expectation ("a number above 0"), a known word near to the one
  // at fault (an empty one adds nothing).
  ParserMessage At(const TokenInfoObj& token) const;
  ParserMessage Expecting(std::string expectation) const;
  ParserMessage Nearest(std::string word) const;

  // Errors of writing.
  void UnbalancedQuote() const;
  void NumberOutOfRange(const std::string& number) const;
  void UnknownMacro(const std::string& name) const;
  void UnexpectedToken(const TokenInfoObj& found) const;

  // Errors of structure: commands, subcommands, parameters.
  void InvalidCommand(const std::string& word) const;
  void InvalidSubCom(const std::string& word) const;
  void InvalidParam(const std::string& word, const std::string& subCom) const;
  void AmbiguousWord(const std::string& word) const;
  void SubComRepeated(const std::string& subCom) const;
  void ParamRepeated(const std::string& param, const std::string& subCom) const;
  void SubComIncomplete(const std::string& subCom) const;
  void ParamExclusive(const std::string& param, const std::string& other,
                      const std::string& subCom) const;
  void ParamExclAnyOther(const std::string& param, const std::string& subCom) const;
  void InvalidParamWithWeight(const std::string& param, const std::string& subCom) const;
  // The value of the parameter makes sense only together with the subcommand.
  void NeedSubComForParam(const std::string& subCom, const std::string& param,
                          const std::string& value) const;

  // Errors of values.
  void WrongValueType(const std::string& param, const std::string& subCom) const;
  void ParamNeedInteger(const std::string& param, const std::string& subCom) const;
  void ParamValueBreakBdry(const std::string& value, const std::string& param,
                           const std::string& subCom) const;
  void InvalidParamOption(const std::string& word, const std::string& param,
                          const std::string& subCom) const;
  void InvalidVarName(const std::string& name, const std::string& param,
                      const std::string& subCom) const;

  // Errors of variables.
  void UnknownVariable(const std::string& name) const;
  void VariableNotNumeric(const std::string& name, const std::string& param,
                          const std::string& subCom) const;
  void VariableExists(const std::string& name, const std::string& param,
                      const std::string& subCom) const;
  void VariableRangeReversed(const std::string& first, const std::string& last) const;
  void OneVariableOnly(const std::string& param, const std::string& subCom) const;
  // One variable in two places that exclude each other.
  void CommonVariable(const std::string& name, const std::string& place,
                      const std::string& otherPlace) const;
  void VariableNoQualif(const std::string& name) const;
  void VariableInvalidQualif(const std::string& name) const;
  void StringVariableNotScale(const std::string& name) const;
  void NeedDepVarCat(const std::string& name) const;

  // Warnings: the command runs.
  void NoTableRequested() const;
  void DisableSplit() const;
  void RepeatedWord(const std::string& word) const;
  // The option changes nothing, `because`.
  void OptionIdle(const std::string& option, const std::string& because) const;

  // How messages call the place of a parameter: "FORCE FACTORS", "dependent variable".
  static std::string PlaceOf(const std::string& param, const std::string& subCom);

 private:
  void Error(const std::string& key, const std::vector<std::string>& arguments = {}) const;
  void Warning(const std::string& key, const std::vector<std::string>& arguments = {}) const;
  std::string Hint() const;
  std::string Detail() const;

  std::string fCommandName;
  std::string fProcedureTitle;
  bool fbPlaced = false;
  TokenInfoObj fPlace;
  std::string fExpectation;
  std::string fNearest;
};
