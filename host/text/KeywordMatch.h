// How a word that a user typed is matched against the words that are known.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace MCHost {

struct KeywordMatch {
  enum Result { kUnknown, kFound, kAmbiguous };

  Result fResult = kUnknown;
  std::size_t fIndex = 0;  // of kFound
};

// Case does not matter. A keyword in full is itself, however short; three letters or more stand for
// the only keyword that begins with them.
KeywordMatch MatchKeyword(const std::string& word, const std::vector<std::string>& keywords);

// The known word that `word` was most likely meant to be: fewest letters to add, drop, change or
// swap, case disregarded, and at most a third of the letters (at least one). Empty when none is
// that near; the first of several.
std::string NearestWord(const std::string& word, const std::vector<std::string>& known);

// What a message about an unknown word ends with: "; did you mean "known"?", empty where none is
// near.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& known);

// "A", "A or B", "A, B or C".
std::string JoinAlternatives(const std::vector<std::string>& words);

}  // namespace MCHost
