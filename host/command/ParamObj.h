// A parameter as the user gave it: its declaration, its tokens, its qualifiers.
//
// Made by the parser, which has checked kind, bounds and words; keywords are spelled in full here,
// however they were abbreviated. The declaration is borrowed from the command's descriptor.
#pragma once

#include <string>
#include <vector>

#include "host/command/KovaVarName.h"
#include "host/command/ParamDescriptor.h"
#include "host/command/TokenInfoObj.h"

class ParamObj {
 public:
  // `name` is the token that the parameter begins with.
  ParamObj(const ParamDescriptor& descriptor, TokenInfoObj name);

  const ParamDescriptor& GetDescriptor() const { return *fpDescriptor; }
  const TokenInfoObj& GetNameToken() const { return fName; }

  // The tokens of the value, without the signs that join and separate them. In a list of variables
  // a qualifier in parentheses is left as it stands, parentheses included.
  const std::vector<TokenInfoObj>& getTokenList() const { return fTokens; }
  void AddToken(TokenInfoObj token);

  // The first token of the value, or the name's when there is no value.
  const TokenInfoObj& GetPlace() const { return fTokens.empty() ? fName : fTokens.front(); }

  // The first token's value. REQUIRES: it is a number; for the integer, a whole one.
  double getNumberValue() const;
  int getIntegerValue() const;

  // The first token's text as a name or as a path; empty without a value.
  KovaVarName getVarName() const;
  std::string getFilePath() const;

  // True when the value is the one word `word`, whatever its case.
  bool isStringValueCase(const std::string& word) const;
  // True when the value begins with that word; numbers or further tokens may follow.
  bool isLeadingToken(const std::string& word) const;

  // Null when the qualifier was not given.
  const ParamObj* getQualifObj(const std::string& name) const;
  void AddQualifier(ParamObj qualifier);

 private:
  const ParamDescriptor* fpDescriptor;
  TokenInfoObj fName;
  std::vector<TokenInfoObj> fTokens;
  std::vector<ParamObj> fQualifiers;
};
