#include "host/command/TokenInfoObj.h"

#include "host/command/Tokenizer.h"
#include "host/session/HostFunctions.h"

bool TokenInfoObj::IsWord(const std::string& keyword) const {
  return fType == kWord && AreStringsEqualCase(fText, keyword);
}

std::string TokenInfoObj::Described() const {
  switch (fType) {
    case kString:
      return "'" + fText + "'";
    case kMacro:
    case kEmptyMacro:
      return "!" + fText;
    default:
      return "\"" + fText + "\"";
  }
}

bool TokenInfoObj::IsPlainWord(const std::string& text) {
  // A period at the end could be read as the end of the command.
  if (text.empty() || text.back() == '.') return false;
  const auto tokens = MCHost::Tokenize(text, 1, 1);
  return tokens.size() == 2 && tokens[0].fType == kWord && tokens[0].fText == text;
}
