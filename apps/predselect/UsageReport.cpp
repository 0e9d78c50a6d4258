#include "apps/predselect/UsageReport.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <system_error>

#include "host/text/KeywordMatch.h"

namespace PredSelectApp {

namespace {

const HelpOption* FindOption(const std::vector<HelpOption>& options, const std::string& name) {
  for (const HelpOption& option : options) {
    if (std::ranges::count(option.fNames, name) > 0) return &option;
  }
  return nullptr;
}

std::string Nearest(const std::string& name, const std::vector<HelpOption>& options) {
  std::vector<std::string> known;
  for (const HelpOption& option : options) {
    for (const std::string& one : option.fNames) {
      // A word that is the beginning of a longer one is what was meant, however short.
      if (name.size() > 3 && one.starts_with(name)) return "; did you mean \"" + one + "\"?";
      if (one.starts_with("--")) known.push_back(one);
    }
  }
  return MCHost::DidYouMean(name, known);
}

}  // namespace

std::string UnknownVerb(const HelpProgram& program, const std::string& word) {
  std::vector<std::string> verbs;
  for (const HelpVerb& verb : program.fVerbs) verbs.push_back(verb.fName);
  if (word.starts_with('-') || std::ranges::count(verbs, word) > 0) return "";
  const std::string what = "there is no verb \"" + word + "\"";
  const std::string hint = MCHost::DidYouMean(word, verbs);
  if (!hint.empty()) return what + hint;
  std::error_code error;
  if (std::filesystem::exists(word, error)) {
    return what + "; to look at that file: predselect describe " + word;
  }
  return what + "; the verbs are " + MCHost::JoinAlternatives(verbs) + ".";
}

std::string UnknownOption(const std::vector<HelpOption>& options,
                          const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    if (words[i].size() < 2 || words[i][0] != '-') continue;
    const bool isLong = words[i][1] == '-';
    const std::string name =
        isLong ? words[i].substr(0, words[i].find('=')) : words[i].substr(0, 2);
    const HelpOption* option = FindOption(options, name);
    if (option == nullptr) {
      return "there is no option \"" + name + "\" here" +
             (isLong && !Nearest(name, options).empty() ? Nearest(name, options) : ".");
    }
    if (!option->fValue.empty() && name == words[i]) ++i;
  }
  return "";
}

std::string PlainUsageError(const std::string& what) {
  const std::pair<const char*, const char*> kPlain[] = {
      {"^(?:--data|FILE) is required$", "FILE, the data to work on, is missing."},
      {"^TARGET is required$", "TARGET, the column to be predicted, is missing."},
      {"^(\\S+) is required$", "$1 is missing."},
      {"^(\\S+): \\d+ required (\\S+?)(?::.*)? missing$", "$1 needs a $2 behind it."},
      {"^-c or -f is required$", "there is no command to run: give -c TEXT or -f FILE."},
      {"^(?:--data|FILE): At Most 1 required but received \\d+$",
       "the data are given more than once, as FILE or with --data."},
      {"^(\\S+): At Most 1 required but received \\d+$", "$1 is given more than once."},
      {"^STATE: At least 2 required but received \\d+$", "there must be two states or more."},
      {"^(\\S+) excludes (\\S+)$", "$1 and $2 exclude each other."},
      {"^(\\S+) requires (\\S+)$", "$1 goes with $2 only."},
      {"^The following arguments? was not expected: (\\S+).*$", "\"$1\" is one word too many."},
      {"^The following arguments were not expected: (.*)$", "these are too many: $1."}};
  for (const auto& [pattern, plain] : kPlain) {
    const std::regex form(pattern);
    if (std::regex_match(what, form)) return std::regex_replace(what, form, plain);
  }
  return what.ends_with('.') || what.ends_with('?') ? what : what + ".";
}

}  // namespace PredSelectApp
