#include "apps/predselect/HelpPage.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "apps/predselect/HelpModel.h"

namespace PredSelectApp {

namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kTextColumn = 26;
constexpr std::size_t kVerbColumn = 14;

// One line's words, the following lines indented.
std::string WrapLine(std::string_view line, std::size_t indent) {
  std::string text;
  std::size_t column = indent;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const bool isFirst = column == indent;
    if (!isFirst && column + 1 + end > kWidth) {
      text += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (!isFirst) {
      text += ' ';
      ++column;
    }
    text += line.substr(0, end);
    column += end;
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return text;
}

// A name, and what is said of it beside or, where the name is long, below it.
std::string Entry(const std::string& name, const std::string& text, std::size_t column) {
  std::string line = "  " + name;
  if (line.size() + 2 > column) {
    line += "\n" + std::string(column, ' ');
  } else {
    line.resize(column, ' ');
  }
  return line + Wrap(text, column) + "\n";
}

std::string NameOf(const HelpOption& option) {
  std::string names;
  for (const std::string& name : option.fNames) names += (names.empty() ? "" : ", ") + name;
  if (!option.fPositional.empty()) return option.fPositional + (option.fbSeveral ? "..." : "");
  // A long option stands below the long ones, whether it has a short one before it or not.
  if (option.fNames.front().starts_with("--")) names = "    " + names;
  return names + (option.fValue.empty() ? "" : " " + option.fValue);
}

std::string Options(const std::vector<HelpOption>& options, const std::string& group) {
  std::string text;
  for (const HelpOption& option : options) {
    if (option.fGroup == group && option.fPositional.empty()) {
      text += Entry(NameOf(option), option.fText, kTextColumn);
    }
  }
  return text.empty() ? "" : "\n" + group + ":\n" + text;
}

std::string Verbs(const HelpProgram& program) {
  std::string text;
  for (const std::string& group : GroupsOf(program.fVerbs)) {
    text += "\n" + group + ":\n";
    for (const HelpVerb& verb : program.fVerbs) {
      if (verb.fGroup == group) text += Entry(verb.fName, verb.fSummary, kVerbColumn);
    }
  }
  return text;
}

}  // namespace

std::string Wrap(const std::string& text, std::size_t indent) {
  std::string wrapped;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = std::string_view(text).substr(start, end - start);
    if (start > 0) wrapped += "\n" + (line.empty() ? "" : std::string(indent, ' '));
    wrapped += line.starts_with(' ') ? std::string(line) : WrapLine(line, indent);
    start = end + 1;
  }
  return wrapped;
}

std::string HelpPage(const HelpVerb& verb) {
  std::string text = Wrap(verb.fSummary, 0) + ".\n\nUsage: " + Wrap(verb.fUsage, 7) + "\n";
  std::string positional;
  for (const HelpOption& option : verb.fOptions) {
    if (option.fPositional.empty()) continue;
    positional += Entry(NameOf(option), option.fText, kTextColumn);
  }
  if (!positional.empty()) text += "\n" + positional;
  for (const std::string& group : GroupsOf(verb.fOptions)) text += Options(verb.fOptions, group);
  return text + (verb.fNotes.empty() ? "" : "\n" + Wrap(verb.fNotes, 0) + "\n");
}

std::string HelpPage(const HelpProgram& program) {
  std::string text = Wrap(program.fSummary, 0) + "\n\nUsage: predselect VERB ...\n";
  text += Verbs(program);
  for (const std::string& group : GroupsOf(program.fOptions)) {
    text += Options(program.fOptions, group);
  }
  return text + "\n" + Wrap(program.fNotes, 0) + "\n";
}

std::string ShortHelp(const HelpProgram& program) {
  return Wrap(program.fSummary, 0) + "\n\nUsage: predselect VERB ...\n" + Verbs(program) + R"(
Examples:
  predselect rank penguins.csv species
  predselect model penguins.csv species --save-model model.bin

"predselect help" tells more, and "predselect help VERB" all about a verb.
)";
}

}  // namespace PredSelectApp
