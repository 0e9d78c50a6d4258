#include "host/text/KeywordMatch.h"

#include <algorithm>

#include "host/session/HostFunctions.h"

namespace MCHost {

namespace {

constexpr std::size_t kShortestAbbreviation = 3;

bool Abbreviates(const std::string& word, const std::string& keyword) {
  return word.size() >= kShortestAbbreviation && word.size() < keyword.size() &&
         AreStringsEqualCase(word, keyword.substr(0, word.size()));
}

// Optimal string alignment distance over bytes.
std::size_t Distance(const std::string& a, const std::string& b) {
  const auto equal = [](char x, char y) {
    return AreStringsEqualCase(std::string(1, x), std::string(1, y));
  };
  std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
  for (std::size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = d[i - 1][j - 1] + (equal(a[i - 1], b[j - 1]) ? 0 : 1);
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, changed});
      if (i > 1 && j > 1 && equal(a[i - 1], b[j - 2]) && equal(a[i - 2], b[j - 1])) {
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
      }
    }
  }
  return d[a.size()][b.size()];
}

}  // namespace

KeywordMatch MatchKeyword(const std::string& word, const std::vector<std::string>& keywords) {
  KeywordMatch match;
  for (std::size_t i = 0; i < keywords.size(); ++i) {
    if (AreStringsEqualCase(word, keywords[i])) return {KeywordMatch::kFound, i};
    if (!Abbreviates(word, keywords[i])) continue;
    const bool first = match.fResult == KeywordMatch::kUnknown;
    match = {first ? KeywordMatch::kFound : KeywordMatch::kAmbiguous, i};
  }
  return match;
}

std::string NearestWord(const std::string& word, const std::vector<std::string>& known) {
  std::size_t nearest = std::max<std::size_t>(1, word.size() / 3) + 1;
  std::string found;
  for (const std::string& candidate : known) {
    const std::size_t longer = std::max(word.size(), candidate.size());
    const std::size_t shorter = std::min(word.size(), candidate.size());
    if (longer - shorter >= nearest) continue;
    const std::size_t distance = Distance(word, candidate);
    if (distance < nearest && distance < longer) {
      nearest = distance;
      found = candidate;
    }
  }
  return found;
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& known) {
  const std::string nearest = NearestWord(word, known);
  return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

std::string JoinAlternatives(const std::vector<std::string>& words) {
  std::string joined;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) joined += i + 1 == words.size() ? " or " : ", ";
    joined += words[i];
  }
  return joined;
}

}  // namespace MCHost
