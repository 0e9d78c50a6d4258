// The parser of every command: checks the tokens against the command's descriptor and hands back
// what was given.
//
// It says everything that is wrong, not only the first: every token that can not be read or, if
// there is none such, every problem of every subcommand. What the grammar can not express (overlaps
// between lists, choices that exclude each other) is left to the procedure.
#pragma once

#include <cstddef>
#include <vector>

#include "host/command/CommandDescriptor.h"
#include "host/command/CommandSpec.h"
#include "host/command/ParserMessage.h"
#include "host/command/TokenCursor.h"
#include "host/command/TokenSequenceBase.h"

class UniversalParser {
 public:
  // All are borrowed; the specification refers to the descriptor, which must outlive it.
  UniversalParser(TokenSequenceBase& tokens, CommandSpec& specification,
                  const CommandDescriptor& descriptor);

  // Fills the specification. False when anything was wrong; messages have then been raised and the
  // specification holds what could be read. REQUIRES: a session is installed for this thread.
  bool getCommandSpecifications();

 private:
  bool ReportBadTokens() const;
  bool CheckCommandWord() const;
  bool ParseSubCom(std::size_t begin, std::size_t end);
  const SubComDescriptor* FindSubCom(const TokenInfoObj& name) const;
  bool ParseParams(MCHost::TokenCursor& cursor, SubComObj& subCom) const;
  bool ParseBareParams(MCHost::TokenCursor& cursor, SubComObj& subCom) const;
  bool ParseParam(MCHost::TokenCursor& cursor, SubComObj& subCom) const;
  const ParamDescriptor* FindParam(const TokenInfoObj& name, const SubComDescriptor& subCom) const;

  const std::vector<TokenInfoObj>& fTokens;
  CommandSpec& fSpecification;
  const CommandDescriptor& fDescriptor;
  ParserMessage fMessages;
};
