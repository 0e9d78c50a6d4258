#include "host/output/ShowText.h"

#include <cctype>
#include <optional>

#include "host/output/FacSTDictionary.h"

namespace MCHost {
namespace {

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

struct ListPattern {
  std::string fSeparator;
  std::size_t fArgument;  // from 0
  std::size_t fLength;
};

// Reads "[%d:<separator>^d:]d" at a place of the text.
std::optional<ListPattern> ReadListPattern(const std::string& text, std::size_t at) {
  if (text.compare(at, 2, "[%") != 0 || at + 4 > text.size() || text[at + 3] != ':') return {};
  const std::size_t end = text.find(":]", at + 4);
  if (end == std::string::npos || end + 2 >= text.size() || !IsDigit(text[end + 2])) return {};
  const std::size_t item = text.rfind('^', end);
  if (item == std::string::npos || item < at + 4) return {};
  const auto argument = static_cast<std::size_t>(text[end + 2] - '1');
  return ListPattern{text.substr(at + 4, item - at - 4), argument, end + 3 - at};
}

struct Choice {
  std::string fOne;
  std::string fMore;
  std::size_t fArgument;  // from 0
  std::size_t fLength;
};

// Reads "{d:<one>|<more>}" at a place of the text.
std::optional<Choice> ReadChoice(const std::string& text, std::size_t at) {
  if (text[at] != '{' || at + 3 > text.size() || !IsDigit(text[at + 1]) || text[at + 2] != ':') {
    return {};
  }
  const std::size_t bar = text.find('|', at);
  const std::size_t end = text.find('}', at);
  if (end == std::string::npos || bar > end) return {};
  return Choice{text.substr(at + 3, bar - at - 3), text.substr(bar + 1, end - bar - 1),
                static_cast<std::size_t>(text[at + 1] - '1'), end + 1 - at};
}

using Shower = std::string (*)(const OutputText&);

std::string Joined(const std::vector<OutputText>& items, const std::string& separator,
                   Shower show) {
  std::string joined;
  for (const OutputText& item : items) {
    if (!joined.empty()) joined += separator;
    joined += show(item);
  }
  return joined;
}

std::string Filled(const std::string& text, const std::vector<OutputText>& arguments, Shower show) {
  std::string filled;
  for (std::size_t at = 0; at < text.size();) {
    const std::optional<ListPattern> list = ReadListPattern(text, at);
    if (list && list->fArgument < arguments.size()) {
      filled += Joined(arguments[list->fArgument].fItems, list->fSeparator, show);
      at += list->fLength;
      continue;
    }
    const std::optional<Choice> choice = ReadChoice(text, at);
    if (choice && choice->fArgument < arguments.size()) {
      const bool isOne = show(arguments[choice->fArgument]) == "1";
      filled += Filled(isOne ? choice->fOne : choice->fMore, arguments, show);
      at += choice->fLength;
      continue;
    }
    const bool placeholder = text[at] == '^' && at + 1 < text.size() && IsDigit(text[at + 1]);
    const auto argument = placeholder ? static_cast<std::size_t>(text[at + 1] - '1') : 0;
    if (placeholder && argument < arguments.size()) {
      filled += show(arguments[argument]);
      at += 2;
    } else {
      filled += text[at++];
    }
  }
  return filled;
}

}  // namespace

std::string FillPlaceholders(const std::string& text, const std::vector<OutputText>& arguments) {
  return Filled(text, arguments, ShowText);
}

std::string ShowText(const OutputText& text) {
  switch (text.fKind) {
    case OutputText::kKey:
      return FillPlaceholders(FacSTDictionary().Lookup(text.fKey), text.fArguments);
    case OutputText::kLiteral:
      return text.fKey;
    default:
      return text.fLabel.empty() ? text.fKey : text.fLabel;
  }
}

std::string KeyText(const std::string& key, const std::vector<std::string>& arguments) {
  OutputText text = OutputText::Key(key);
  for (const std::string& argument : arguments) {
    text.fArguments.push_back(OutputText::Literal(argument));
  }
  return ShowText(text);
}

std::string TextId(const OutputText& text) {
  return text.fArguments.empty() ? text.fKey : Filled(text.fKey, text.fArguments, TextId);
}

}  // namespace MCHost
