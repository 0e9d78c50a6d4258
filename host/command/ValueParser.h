// Reads the value of one parameter as its declaration says, and says what is wrong with it.
#pragma once

#include "host/command/ParamObj.h"
#include "host/command/ParserMessage.h"
#include "host/command/SubComDescriptor.h"
#include "host/command/TokenCursor.h"

namespace MCHost {

class ValueParser {
 public:
  // All are borrowed. `messages` carries the command's name.
  ValueParser(TokenCursor& cursor, const SubComDescriptor& subCom, const ParserMessage& messages)
      : fCursor(cursor), fSubCom(subCom), fMessages(messages) {}

  // With the cursor behind the parameter's name (at the value of a bare one): reads what joins them
  // and the value into `param`. False after a message; the cursor then stands where reading failed
  // or behind a value that is refused.
  bool Parse(ParamObj& param);

 private:
  bool ParseNamedValue(ParamObj& param);
  bool ParseNumber(ParamObj& param);
  bool ParseKeyword(ParamObj& param);
  bool ParseKeywordList(ParamObj& param);
  bool ParseName(ParamObj& param);
  bool ParseFile(ParamObj& param);
  bool ParseNewNames(ParamObj& param);
  bool ParseVariables(ParamObj& param);
  bool ParseVariableQualifier(ParamObj& param);
  bool ParseQualifiers(ParamObj& param);
  bool ParseQualifier(ParamObj& param);

  bool TakeKeyword(ParamObj& param);
  bool Expect(TokenInfoObj::Type type, const char* sign);
  bool Fail(const ParamObj& param);
  bool IsListEnd() const;

  TokenCursor& fCursor;
  const SubComDescriptor& fSubCom;
  const ParserMessage& fMessages;
};

}  // namespace MCHost
