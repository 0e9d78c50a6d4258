#include "host/command/CommandSplitter.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "host/text/KeywordMatch.h"

namespace MCHost {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Whether the text begins with blanks and one of the words.
bool BeginsCommand(std::string_view text, const std::vector<std::string>& words) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == 0 || first == std::string_view::npos) return false;
  const std::string_view word = text.substr(first, text.find_first_of(kBlanks, first) - first);
  return MatchKeyword(std::string(word), words).fResult == KeywordMatch::kFound;
}

// Behind the first period of the line that another command follows; npos where none does.
std::size_t FindInnerEnd(std::string_view line, const std::vector<std::string>& words) {
  char quote = 0;
  for (std::size_t i = 0; i < line.size() && !words.empty(); ++i) {
    const char c = line[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '\'' || c == '"') {
      quote = c;
    } else if (c == '.' && BeginsCommand(line.substr(i + 1), words)) {
      return i + 1;
    }
  }
  return std::string_view::npos;
}

// Where the command that starts at `start` ends: behind the first period that ends a line, or that
// another command follows.
std::size_t FindEnd(std::string_view text, std::size_t start,
                    const std::vector<std::string>& words) {
  const bool isComment = text[start] == '*';
  for (std::size_t lineStart = start; lineStart < text.size();) {
    const std::size_t lineEnd = std::min(text.find('\n', lineStart), text.size());
    const std::string_view line = text.substr(lineStart, lineEnd - lineStart);
    const std::size_t inner = isComment ? std::string_view::npos : FindInnerEnd(line, words);
    if (inner != std::string_view::npos) return lineStart + inner;
    const std::size_t last = line.find_last_not_of(kBlanks);
    if (last != std::string_view::npos && line[last] == '.') return lineStart + last + 1;
    lineStart = lineEnd + 1;
  }
  return text.size();
}

void SetPlace(std::string_view before, CommandText& command) {
  const std::size_t newline = before.rfind('\n');
  const std::string_view line =
      newline == std::string_view::npos ? before : before.substr(newline + 1);
  const auto startsCharacter = [](char c) { return (c & 0xC0) != 0x80; };
  command.fLine = 1 + static_cast<int>(std::count(before.begin(), before.end(), '\n'));
  command.fColumn = 1 + static_cast<int>(std::count_if(line.begin(), line.end(), startsCharacter));
}

}  // namespace

std::vector<CommandText> SplitCommands(const std::string& text,
                                       const std::vector<std::string>& words) {
  std::string_view rest = text;
  if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
  std::vector<CommandText> commands;
  std::size_t start = 0;
  while ((start = rest.find_first_not_of(kBlanks, start)) != std::string_view::npos) {
    const std::size_t end = FindEnd(rest, start, words);
    const std::string_view command = rest.substr(start, end - start);
    if (command != "." && command.front() != '*') {
      commands.push_back({std::string(command), 1, 1});
      SetPlace(rest.substr(0, start), commands.back());
    }
    start = end;
  }
  return commands;
}

}  // namespace MCHost
