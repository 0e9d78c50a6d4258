// The options that several verbs take, by the groups in which help shows them. Whatever they are
// read into is borrowed: it lives as long as the command line is parsed.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"
#include "host/text/KeywordMatch.h"

namespace PredSelectApp {

// The groups of options in the pages of help.
constexpr const char* kDataGroup = "Data";
constexpr const char* kResultsGroup = "Results";
constexpr const char* kSavingGroup = "Saving";
constexpr const char* kWorkGroup = "Work";

// What is added to the command from here on stands in that group.
inline void InGroup(CLI::App& command, const char* group) {
  command.option_defaults()->group(group);
}

// An option that takes one of a few words.
template <class Value>
void AddChoice(CLI::App& command, const std::string& name, Value& value,
               const std::vector<std::pair<std::string, Value>>& choices, const std::string& help) {
  std::string words;
  for (const auto& choice : choices) words += (words.empty() ? "" : "|") + choice.first;
  const auto take = [&value, choices, name](const std::string& word) {
    for (const auto& choice : choices) {
      if (choice.first == word) {
        value = choice.second;
        return;
      }
    }
    std::vector<std::string> known;
    for (const auto& choice : choices) known.push_back(choice.first);
    const std::string hint = MCHost::DidYouMean(word, known);
    throw CLI::ValidationError(
        name, "\"" + word + "\" is none of " + MCHost::JoinAlternatives(known) + hint);
  };
  command.add_option_function<std::string>(name, take, help)->type_name(words);
}

// Which file, and how it is read.
void AddDataOptions(CLI::App& command, DataOptions& data);

void AddWeight(CLI::App& command, DataOptions& data);

// The number of a part of the data.
void AddPart(CLI::App& command, DataOptions& data);

// The ranges of the whole of which the data are a part.
void AddUsing(CLI::App& command, DataOptions& data);

// Processes that share the parts of the data.
void AddJobs(CLI::App& command, Options& options);

// Of every result: the page, the report, the document, or the records of a table. `tables`: the
// subtypes of those that there may be, the main one first; `mains`: what is said of the main one.
void AddFormat(CLI::App& command, ResultOptions& result, const std::vector<std::string>& tables,
               const std::string& mains = "the first");

void AddPager(CLI::App& command, ResultOptions& result);

// Where results go and how they look.
void AddResultOptions(CLI::App& command, ResultOptions& result);

// A check that takes whole numbers of that range.
std::function<std::string(const std::string&)> WholeNumber(
    int least, int most = std::numeric_limits<int>::max());

// `of`: which cases, in the words of help.
void AddMemory(CLI::App& command, const std::string& of, Options& options);

void AddThreads(CLI::App& command, int& threads);

// `what`: what is new in the table that is saved. Returns the option of its file.
CLI::Option* AddSaveOptions(CLI::App& command, const std::string& what, SaveOptions& save);

// Empty, or why a state cannot be saved under the name.
std::string IsStateName(const std::string& name);

// The key that the file of `saved` is signed with.
void AddSignKey(CLI::App& command, Options& options, CLI::Option* saved);

// The key that states must be signed with.
void AddVerifyKey(CLI::App& command, Options& options);

// The state or states that a verb starts from.
void AddState(CLI::App& command, const std::string& name, Options& options, bool several);

// What ranks or models a target that is named, besides the data.
void AddTarget(CLI::App& command, Options& options, std::string& target,
               std::vector<std::string>& except);

void AddDryRun(CLI::App& command, Options& options);

void AddProgress(CLI::App& command, ResultOptions& result);

}  // namespace PredSelectApp
