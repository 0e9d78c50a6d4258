// A place within the tokens of one subcommand, as parsing moves on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "host/command/TokenInfoObj.h"

namespace MCHost {

class TokenCursor {
 public:
  // From `begin` up to the slash or end token at `end`; the tokens are borrowed.
  TokenCursor(const std::vector<TokenInfoObj>& tokens, std::size_t begin, std::size_t end)
      : fTokens(tokens), fIndex(begin), fEnd(end) {}

  bool AtEnd() const { return fIndex == fEnd; }

  // The token `ahead` of the current one; behind the last, the one that ends the subcommand.
  const TokenInfoObj& Peek(std::size_t ahead = 0) const {
    return fTokens[std::min(fIndex + ahead, fEnd)];
  }
  bool Is(TokenInfoObj::Type type, std::size_t ahead = 0) const {
    return Peek(ahead).fType == type;
  }

  // Returns the current token and moves behind it. At the end it stays there.
  const TokenInfoObj& Take() {
    const TokenInfoObj& token = Peek();
    if (AtEnd()) return token;
    if (token.fType == TokenInfoObj::kLeftParen) ++fNOpen;
    if (token.fType == TokenInfoObj::kRightParen && fNOpen > 0) --fNOpen;
    ++fIndex;
    return token;
  }

  // Takes the current token when it is of that type.
  bool Accept(TokenInfoObj::Type type) {
    if (AtEnd() || !Is(type)) return false;
    Take();
    return true;
  }

  // True behind an opening parenthesis, until the closing one is taken too.
  bool IsInParentheses() const { return fNOpen > 0; }

 private:
  const std::vector<TokenInfoObj>& fTokens;
  std::size_t fIndex;
  std::size_t fEnd;
  int fNOpen = 0;
};

}  // namespace MCHost
