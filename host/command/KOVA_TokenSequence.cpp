#include "host/command/KOVA_TokenSequence.h"

#include <string>

#include "host/command/Tokenizer.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

void AppendMacro(TokenInfoObj macro, const MCHost::ISession& session,
                 std::vector<TokenInfoObj>& tokens) {
  const std::vector<std::string>* names = session.FindMacro(macro.fText);
  if (names == nullptr) {
    macro.fProblem = TokenInfoObj::kUnknownMacro;
    tokens.push_back(macro);
    return;
  }
  if (names->empty()) {
    macro.fType = TokenInfoObj::kEmptyMacro;
    tokens.push_back(macro);
  }
  for (const std::string& name : *names) {
    macro.fType = TokenInfoObj::kQuotedName;
    macro.fText = name;
    tokens.push_back(macro);
  }
}

std::vector<TokenInfoObj> TokensOf(const MCHost::ISession& session, bool expandMacros) {
  std::vector<TokenInfoObj> tokens;
  for (const TokenInfoObj& token :
       MCHost::Tokenize(session.CommandText(), session.CommandLine(), session.CommandColumn())) {
    if (expandMacros && token.fType == TokenInfoObj::kMacro) {
      AppendMacro(token, session, tokens);
    } else {
      tokens.push_back(token);
    }
  }
  return tokens;
}

}  // namespace

KOVA_TokenSequence::KOVA_TokenSequence(bool expandMacros)
    : TokenSequenceBase(TokensOf(MCHost::CurrentSession(), expandMacros)) {}
