// The tokens of one command, in order, whatever they were made from.
#pragma once

#include <utility>
#include <vector>

#include "host/command/TokenInfoObj.h"

class TokenSequenceBase {
 public:
  // REQUIRES: the last token is kEnd.
  explicit TokenSequenceBase(std::vector<TokenInfoObj> tokens) : fTokens(std::move(tokens)) {}

  const std::vector<TokenInfoObj>& GetTokens() const { return fTokens; }

 private:
  std::vector<TokenInfoObj> fTokens;
};
