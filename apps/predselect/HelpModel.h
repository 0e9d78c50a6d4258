// What the declared options say of a verb, as values: help, manual page and completions are made of
// them.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace PredSelectApp {

struct HelpOption {
  std::string fPositional;          // its name where it needs no dashes, else empty
  std::vector<std::string> fNames;  // "-o", "--output"
  std::string fValue;               // what it takes: "FILE", "VAR=LEVEL"; empty for a flag
  std::vector<std::string> fWords;  // where it takes one of a few
  std::string fText;
  std::string fGroup;
  bool fbRequired = false;
  bool fbSeveral = false;  // values one after the other
};

struct HelpVerb {
  std::string fName;
  std::string fSummary;
  std::string fGroup;
  std::string fUsage;  // "predselect rank FILE TARGET [options]"
  std::string fNotes;  // examples, and what else stands below the options
  std::vector<HelpOption> fOptions;
};

struct HelpProgram {
  std::string fSummary;
  std::string fNotes;
  std::vector<HelpVerb> fVerbs;
  std::vector<HelpOption> fOptions;
};

HelpVerb DescribeVerb(const CLI::App& verb);
HelpProgram DescribeProgram(const CLI::App& app);

// Groups in the order in which they first come, each once.
template <class Item>
std::vector<std::string> GroupsOf(const std::vector<Item>& items) {
  std::vector<std::string> groups;
  for (const Item& item : items) {
    bool isKnown = false;
    for (const std::string& group : groups) isKnown = isKnown || group == item.fGroup;
    if (!isKnown) groups.push_back(item.fGroup);
  }
  return groups;
}

}  // namespace PredSelectApp
