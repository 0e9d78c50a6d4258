#include "apps/predselect/HelpModel.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <utility>

namespace PredSelectApp {

namespace {

const std::vector<std::string> kHelpNames = {"-h", "--help"};

// Of a group of options among those of a verb: what is the verb's own stands in the middle.
int Place(const std::string& group) {
  constexpr std::pair<const char*, int> kPlaces[] = {
      {"Data", 0}, {"Columns", 1}, {"Results", 3}, {"Saving", 4}, {"Work", 5}};
  for (const auto& [known, place] : kPlaces) {
    if (group == known) return place;
  }
  return 2;
}

// Of "a|b|c"; none of a single word, which stands for what is typed.
std::vector<std::string> WordsOf(const std::string& value) {
  std::vector<std::string> words;
  if (value.find('|') == std::string::npos) return words;
  for (std::size_t start = 0; start <= value.size();) {
    const std::size_t end = std::min(value.find('|', start), value.size());
    words.push_back(value.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

HelpOption DescribeOption(const CLI::Option& option) {
  HelpOption help;
  if (option.get_positional()) help.fPositional = option.get_name(true, false);
  for (const std::string& name : option.get_snames()) help.fNames.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) help.fNames.push_back("--" + name);
  // A check puts its own words behind a colon.
  const std::string type = option.get_type_size() != 0 ? option.get_type_name() : "";
  help.fValue = type.substr(0, type.find(':'));
  help.fWords = WordsOf(help.fValue);
  help.fText = option.get_description();
  const std::string& standard = option.get_default_str();
  if (!standard.empty()) help.fText += " (default: " + standard + ")";
  help.fGroup = option.get_group();
  help.fbRequired = option.get_required();
  help.fbSeveral = option.get_allow_extra_args() && option.get_expected_max() > 1;
  return help;
}

std::vector<HelpOption> DescribeOptions(const CLI::App& app) {
  std::vector<HelpOption> options;
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_group().empty()) options.push_back(DescribeOption(*option));
  }
  return options;
}

std::string UsageOf(const HelpVerb& verb) {
  std::string required;
  std::string positional;
  bool hasMore = false;
  for (const HelpOption& option : verb.fOptions) {
    if (!option.fPositional.empty()) {
      const std::string name = option.fPositional + (option.fbSeveral ? "..." : "");
      positional += option.fbRequired ? " " + name : " [" + name + "]";
    } else if (option.fbRequired) {
      required += " " + option.fNames.back() + " " + option.fValue;
    } else {
      hasMore = true;
    }
  }
  return "predselect " + verb.fName + positional + required + (hasMore ? " [options]" : "");
}

}  // namespace

HelpVerb DescribeVerb(const CLI::App& verb) {
  HelpVerb help{verb.get_name(),   verb.get_description(), verb.get_group(), "",
                verb.get_footer(), DescribeOptions(verb)};
  // The help of a verb need not say that there is help, and its groups come in one order.
  std::erase_if(help.fOptions,
                [](const HelpOption& option) { return option.fNames == kHelpNames; });
  std::ranges::stable_sort(help.fOptions, {}, [](const HelpOption& o) { return Place(o.fGroup); });
  help.fUsage = UsageOf(help);
  return help;
}

HelpProgram DescribeProgram(const CLI::App& app) {
  HelpProgram help{app.get_description(), app.get_footer(), {}, DescribeOptions(app)};
  for (const CLI::App* verb : app.get_subcommands({})) help.fVerbs.push_back(DescribeVerb(*verb));
  return help;
}

}  // namespace PredSelectApp
