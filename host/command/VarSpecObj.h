// The variables that a command gives one role: resolved against the data, checked, reported on.
//
// A role is known by its place in the grammar, which messages name. Lists hold names, `a TO c` (the
// variables from a to c in the order of the data) and ALL. ALL leaves out the variables that the
// role was told of and, in a numeric role, string variables. A name given twice is kept once, with
// a warning. Nothing is owned; indices are those of the data source.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/command/CommandDescriptor.h"
#include "host/command/KovaVarName.h"
#include "host/command/ParamObj.h"
#include "host/command/ParserMessage.h"
#include "host/data/KOVA_DataSource.h"

class VarSpecObj {
 public:
  VarSpecObj(const std::string& subCom, const std::string& param, const CommandDescriptor& command,
             const KOVA_DataSource& source, bool numericOnly);

  // Whether the declared qualifiers may follow a single variable; off at first.
  void SetAllowQualifiers(bool allow) { fbAllowQualifiers = allow; }

  // Whether ValidateVariables() takes a list that was not given as ALL; off at first.
  void SetAllVarsByDefault(bool byDefault) { fbAllByDefault = byDefault; }

  // Variables that ALL does not stand for; -1 is ignored.
  void SetLeftOutOfAll(const std::vector<int>& variables) { fLeftOut = variables; }

  // Takes the one variable of the parameter, and its qualifier. False after a message.
  bool ValidateVariable(const ParamObj& param);
  // The same for a variable that the host gave.
  bool ValidateVariable(int index);

  // Takes the list of the parameter; null when it was not given. False after messages, one for
  // every name at fault.
  bool ValidateVariables(const ParamObj* param);

  // False after a message for each variable that both roles hold.
  bool CheckCommonVars(const VarSpecObj& other) const;

  // False after a message unless the value can name a new variable.
  bool CheckNewVariable(const ParamObj& param) const;
  // False after a message unless names of new variables can be made from the token.
  bool CheckRoot(const TokenInfoObj& root) const;

  // A name that no variable has: the root itself, or with "_1", "_2", ... behind it. False when no
  // valid name can be made.
  bool NewVarNameByRoot(const KovaVarName& root, KovaVarName& name) const;
  // `count` such names: the root with "_1" to "_count" behind it; when one of these exists, the
  // same from "root_1", "root_2", ... as root.
  bool NewVarNamesByRoot(const KovaVarName& root, int count, std::vector<KovaVarName>& names) const;

  const std::vector<int>& GetValidVarList() const { return fVariables; }
  int GetNValidVars() const { return static_cast<int>(fVariables.size()); }
  // The first variable, -1 when there is none.
  int GetValidVarInd() const { return fVariables.empty() ? -1 : fVariables.front(); }

  // The value of the qualifier behind a single variable, in full; empty without one.
  const std::string& GetQualifierValue() const { return fQualifierValue; }

  // Where the variable stands in the command; the end token when it was not typed.
  // REQUIRES: the role holds the variable.
  const TokenInfoObj& GetPlace(int variable) const;

 private:
  // Names being read: the tokens of a list and how far it has come.
  struct NameList {
    const std::vector<TokenInfoObj>& fTokens;
    std::size_t fIndex = 0;

    const TokenInfoObj* Peek(std::size_t ahead = 0) const {
      return fIndex + ahead < fTokens.size() ? &fTokens[fIndex + ahead] : nullptr;
    }
  };

  void Clear();
  bool TakeItem(NameList& list);
  bool TakeName(NameList& list);
  bool TakeRange(NameList& list);
  bool TakeQualifier(const ParamObj& param);
  void TakeAll(const TokenInfoObj& place);
  bool Add(int variable, const TokenInfoObj& place);
  int Resolve(const TokenInfoObj& name) const;
  bool Holds(int variable) const;
  bool AreAllNew(const std::vector<KovaVarName>& names) const;

  std::string fSubCom;
  std::string fParam;
  const KOVA_DataSource& fSource;
  bool fbNumericOnly;
  bool fbAllowQualifiers = false;
  bool fbAllByDefault = false;
  ParserMessage fMessages;
  std::vector<int> fLeftOut;
  std::vector<int> fVariables;
  std::vector<TokenInfoObj> fPlaces;  // of fVariables
  std::string fQualifierValue;
};
