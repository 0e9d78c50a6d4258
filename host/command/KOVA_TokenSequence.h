// The tokens of the current session's command.
#pragma once

#include "host/command/TokenSequenceBase.h"

class KOVA_TokenSequence : public TokenSequenceBase {
 public:
  // With `expandMacros`, `!name` becomes the names that the session's macro holds, each at the
  // place of the macro in the user's text; a macro that was never set becomes a problem token.
  // REQUIRES: a session is installed for this thread.
  explicit KOVA_TokenSequence(bool expandMacros);
};
