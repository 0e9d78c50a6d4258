#include "apps/predselect/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Completion.h"
#include "apps/predselect/Examples.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/HelpModel.h"
#include "apps/predselect/HelpPage.h"
#include "apps/predselect/ManPage.h"
#include "apps/predselect/MemorySize.h"
#include "apps/predselect/UsageError.h"
#include "apps/predselect/UsageReport.h"
#include "host/session/HostFunctions.h"
#include "host/session/SameFile.h"
#include "host/text/KeywordMatch.h"
#include "operations/AvailableThreads.h"
#include "operations/Version.h"

namespace PredSelectApp {

namespace {

using MCHost::FileFormat;

constexpr int kPageRows = 20;  // of a ranking, unless more are asked for

// The groups of options in the pages of help.
constexpr const char* kDataGroup = "Data";
constexpr const char* kResultsGroup = "Results";
constexpr const char* kSavingGroup = "Saving";
constexpr const char* kWorkGroup = "Work";

constexpr const char* kShortVerbs = "Verbs";
constexpr const char* kLanguage = "The command language, and saved states";
constexpr const char* kHelpVerbs = "Help";

// What is added to the command from here on stands in that group.
void InGroup(CLI::App& command, const char* group) { command.option_defaults()->group(group); }

void AddReadingOptions(CLI::App& command, MCHost::ReadingOptions& reading) {
  for (const MCHost::ReadingOption& option : MCHost::AllReadingOptions()) {
    const std::string name = std::string("--") + option.fName;
    const auto take = [&reading, &option, name](const std::string& word) {
      const std::string wrong = MCHost::SetReadingOption(reading, option.fName, word);
      if (!wrong.empty()) throw CLI::ValidationError(name, wrong);
    };
    if (*option.fWords == '\0') {
      command.add_flag_callback(
          name, [take] { take(""); }, option.fHelp);
      continue;
    }
    CLI::Option* added = command.add_option_function<std::vector<std::string>>(
        name,
        [take](const std::vector<std::string>& words) {
          for (const auto& word : words) take(word);
        },
        option.fHelp);
    added->type_name(option.fWords)->allow_extra_args(false);
    if (!option.fbRepeated) added->expected(1);
  }
}

void AddDataOptions(CLI::App& command, DataOptions& data) {
  InGroup(command, kDataGroup);
  command
      .add_option(
          "--data,FILE", data.fFile,
          "Data file: .csv, .tsv, .parquet, .arrow, .feather, .jsonl, .json, .xlsx or .ods; - is "
          "standard input, CSV unless --input-format says otherwise; sqlite:FILE, duckdb:FILE "
          "and postgresql://... are databases; with or without --data before it")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--schema", data.fSchema, "Labels, levels, missing values: a Table Schema file")
      ->type_name("FILE");
  command.add_option("--level", data.fLevels, "Measurement level: nominal, ordinal or scale")
      ->type_name("VAR=LEVEL")
      ->allow_extra_args(false);
  command
      .add_option("--null", data.fNullTokens,
                  "One more text that means null in CSV and TSV (besides nothing, NA, NULL, ...)")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command.add_flag("--stream", data.fbStream,
                   "Read the file again on every pass instead of keeping it in memory");
  AddReadingOptions(command, data.fReading);
}

void AddWeight(CLI::App& command, DataOptions& data) {
  InGroup(command, kDataGroup);
  command.add_option("--weight", data.fWeight, "Frequency weight variable")->type_name("VAR");
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

bool KnowsTable(const std::vector<std::string>& tables, const std::string& name) {
  return std::ranges::any_of(
      tables, [&name](const std::string& table) { return AreStringsEqualCase(table, name); });
}

std::string JoinedNames(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

// Of every result: the page, the report, the document, or the records of a table. `tables`: the
// subtypes of those that there may be, the main one first; `mains`: what is said of the main one.
void AddFormat(CLI::App& command, ResultOptions& result, const std::vector<std::string>& tables,
               const std::string& mains = "the first") {
  InGroup(command, kResultsGroup);
  std::vector<std::pair<std::string, FileFormat>> words;
  for (const MCHost::FileFormatNames& format : MCHost::FileFormats()) {
    if (format.fbResult) words.emplace_back(format.fWord, format.fFormat);
  }
  AddChoice<FileFormat>(
      command, "--format", result.fFormat, words,
      "A page to read (default), a report to look at in a browser (html), a document for programs "
      "(json), or the records of one table; without it the extension of --output decides: " +
          MCHost::EndingsOf(&MCHost::FileFormatNames::fbResult));
  command
      .add_option_function<std::string>(
          "--table",
          [&result, tables](const std::string& name) {
            if (!KnowsTable(tables, name)) {
              const std::string hint = MCHost::DidYouMean(name, tables);
              throw CLI::ValidationError(
                  "--table", "there is no table \"" + name + "\" here" +
                                 (hint.empty() ? "; there are " + JoinedNames(tables) : hint));
            }
            result.fTable = name;
          },
          "The table whose records are written (default: " + mains + "): " + JoinedNames(tables))
      ->type_name("NAME");
}

bool HasRecords(FileFormat format) {
  return format != FileFormat::kText && format != FileFormat::kJson && format != FileFormat::kHtml;
}

// What --format is without a word.
void CompleteFormat(const CLI::App& command, ResultOptions& result) {
  if (command.count("--format") == 0) {
    const std::optional<FileFormat> format = MCHost::FormatOfPath(result.fFile);
    const bool isKnown = format && MCHost::NamesOf(*format).fbResult;
    result.fFormat = isKnown ? *format : FileFormat::kText;
  }
  if (!result.fTable.empty() && !HasRecords(result.fFormat)) {
    throw CLI::ValidationError("--table",
                               "a page, a report and a JSON document have all tables; say csv, "
                               "or another format of one table, with --format");
  }
}

void AddPager(CLI::App& command, ResultOptions& result) {
  command.add_flag_callback(
      "--no-pager", [&result] { result.fbPager = false; },
      "Long pages on a terminal all at once, without a pager");
}

void AddResultOptions(CLI::App& command, ResultOptions& result) {
  InGroup(command, kResultsGroup);
  command
      .add_option("-o,--output", result.fFile, "Write the results here (default: standard output)")
      ->type_name("FILE");
  AddChoice<Color>(command, "--color", result.fColor,
                   {{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}},
                   "Colours in text (default: auto, on a terminal only)");
  command.add_flag("--quiet", result.fbQuiet, "No warnings and no progress on standard error");
  AddPager(command, result);
}

// A check that takes whole numbers of that range.
std::function<std::string(const std::string&)> WholeNumber(
    int least, int most = std::numeric_limits<int>::max()) {
  return [least, most](const std::string& text) -> std::string {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && rest == end;
    if (isNumber && number >= least && number <= most) return "";
    const std::string bounds =
        most == std::numeric_limits<int>::max()
            ? "of at least " + std::to_string(least)
            : "from " + std::to_string(least) + " to " + std::to_string(most);
    return "\"" + text + "\" is not a whole number " + bounds;
  };
}

std::string IsShare(const std::string& text) {
  double share = 0.0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, share);
  const bool isShare = error == std::errc() && rest == end && share >= 0.0 && share <= 0.99;
  return isShare ? "" : "\"" + text + "\" is not a share from 0 to 0.99, such as 0.3";
}

void AddMemory(CLI::App& command, const std::string& of, double& memory) {
  InGroup(command, kWorkGroup);
  const auto take = [&memory](const std::string& text) {
    const std::optional<double> size = ParseMemorySize(text);
    if (!size && text != "auto") {
      throw CLI::ValidationError(
          "--memory", "\"" + text +
                          "\" is neither auto nor a size of at least 4K, such as 512M, 2G "
                          "or 4096 (kilobytes)");
    }
    memory = size.value_or(Options::kAutoMemory);
  };
  command
      .add_option_function<std::string>(
          "--memory", take,
          "Memory for the cases" + of +
              ": 512M, 2G, 4096 (kilobytes), or auto for half of what is free")
      ->type_name("SIZE");
}

void AddThreads(CLI::App& command, int& threads) {
  InGroup(command, kWorkGroup);
  command
      .add_option("--threads", threads,
                  "Threads at work at once, which changes no result (default: one for each "
                  "processor)")
      ->check(WholeNumber(1, PredSelect::kMostThreads))
      ->type_name("N");
}

CLI::Option* AddSaveOptions(CLI::App& command, const std::string& what, SaveOptions& save) {
  InGroup(command, kSavingGroup);
  CLI::Option* file =
      command.add_option("--save-data", save.fFile,
                         "Write the table with the " + what + ": " +
                             MCHost::EndingsOf(&MCHost::FileFormatNames::fbWritten));
  file->type_name("FILE");
  CLI::Option* onlyNew =
      command.add_flag("--only-new", save.fbOnlyNew, "Save the " + what + " alone")->needs(file);
  command
      .add_option("--id", save.fKeys,
                  "With --only-new: these columns of the data as well, before the new ones")
      ->type_name("COL...")
      ->needs(onlyNew);
  command.add_flag("--force", save.fbForce, "Save over a file that is there, an input as well")
      ->needs(file);
  return file;
}

// Two results in one file would leave only the last, and what is read must stay; a table may take
// the place of what it was made from where that is asked for.
void RefuseOneFileForTwo(const Options& options) {
  const std::vector<FileUse> files = FilesOf(options);
  for (const FileUse& file : files) {
    const std::string quoted = "\"" + file.fPath + "\"";
    if (file.fbWritten && MayBeResultDocument(file.fPath, options)) {
      throw CLI::ValidationError(file.fOption, quoted + " may be a document of --results, too");
    }
    for (const FileUse& other : files) {
      const bool isForced = file.fbTable && !other.fbWritten;
      const bool isFree = !file.fbWritten || &file == &other || (isForced && options.fSave.fbForce);
      if (isFree || !MCHost::IsSameFile(file.fPath, other.fPath)) continue;
      throw CLI::ValidationError(file.fOption, quoted + " is the file of " + other.fOption +
                                                   ", too" +
                                                   (isForced ? "; --force replaces it" : ""));
    }
  }
}

void AddState(CLI::App& command, const std::string& name, Options& options, bool several) {
  InGroup(command, kDataGroup);
  command
      .add_option(name, options.fStates,
                  several ? "States saved by run --save-state, two or more"
                          : "State saved by model --save-model or run --save-state")
      ->required()
      ->expected(several ? 2 : 1, several ? CLI::detail::expected_max_vector_size : 1)
      ->allow_extra_args(several)
      ->type_name("STATE");
}

// What ranks or models a target that is named, besides the data.
void AddTarget(CLI::App& command, Options& options, std::string& target,
               std::vector<std::string>& except) {
  InGroup(command, "Columns");
  command.add_option("TARGET", target, "The variable to be predicted")
      ->required()
      ->type_name("VAR");
  command.add_option("--except", except, "Leave this column out; may be repeated")
      ->type_name("VAR")
      ->allow_extra_args(false);
  InGroup(command, kWorkGroup);
  command.add_flag("--show-command", options.fbShowCommand,
                   "Show the command that this stands for instead of running it");
}

void AddDryRun(CLI::App& command, Options& options) {
  InGroup(command, kWorkGroup);
  command.add_flag("--dry-run", options.fbDryRun,
                   "Say what would be read, used and written, and what is wrong with it; write "
                   "nothing");
}

void AddProgress(CLI::App& command, ResultOptions& result) {
  InGroup(command, kWorkGroup);
  command.add_flag_callback(
      "--no-progress", [&result] { result.fbProgress = false; }, "No progress line");
}

CLI::App* AddRank(CLI::App& app, Options& options) {
  using PredSelect::RankBy;
  CLI::App* rank = app.add_subcommand(
      "rank", "Rank the columns of a file by how each goes with a target, the best first");
  AddDataOptions(*rank, options.fData);
  AddWeight(*rank, options.fData);
  AddTarget(*rank, options, options.fRank.fTarget, options.fRank.fExcept);
  InGroup(*rank, "Ranking");
  AddChoice<RankBy>(
      *rank, "--by", options.fRank.fBy,
      {{"p", RankBy::kPearson},
       {"lr", RankBy::kLikelihoodRatio},
       {"v", RankBy::kCramersV},
       {"lambda", RankBy::kLambda},
       {"bits", RankBy::kBits}},
      "What ranks: p-value (default), the same by the likelihood ratio, Cramer's V or "
      "lambda among categorical columns, or mutual information");
  rank->add_option("--top", options.fRank.fTop,
                   "Show so many predictors; 0 for all (default: 20 on a page, else all)")
      ->check(WholeNumber(0))
      ->type_name("N");
  AddThreads(*rank, options.fThreads);
  AddFormat(*rank, options.fResult, {"Ranking"});
  AddResultOptions(*rank, options.fResult);
  AddProgress(*rank, options.fResult);
  AddDryRun(*rank, options);
  rank->footer(kRankExamples)->group(kShortVerbs);
  return rank;
}

constexpr std::pair<const char*, const char*> kCommandHelp[] = {
#include "apps/predselect/CommandHelp.inc"
};

// Empty, or why a state cannot be saved under the name.
std::string IsStateName(const std::string& name) {
  for (const char* ending : {".bin", ".xml"}) {
    if (name.size() > 4 && name.ends_with(ending)) return "";
  }
  return "\"" + name + "\": a state file is named .bin or .xml";
}

CLI::App* AddModel(CLI::App& app, Options& options) {
  CLI::App* model = app.add_subcommand(
      "model", "Build a classifier of a target from the few columns that serve it best");
  AddDataOptions(*model, options.fData);
  AddWeight(*model, options.fData);
  AddTarget(*model, options, options.fModel.fTarget, options.fModel.fExcept);
  InGroup(*model, "Model");
  CLI::Option* test =
      model
          ->add_option("--test", options.fModel.fTest,
                       "Share of the cases, drawn at random, that test the model; 0 for none")
          ->check(IsShare)
          ->capture_default_str()
          ->type_name("SHARE");
  model
      ->add_option("--training-column", options.fModel.fTrainingColumn,
                   "Column that is 1 in the cases that train the model; the others test it")
      ->type_name("VAR")
      ->excludes(test);
  model
      ->add_option("--predictors", options.fModel.fPredictors,
                   "At most so many (default: as many as serve the model)")
      ->check(WholeNumber(1))
      ->type_name("N");
  AddFormat(*model, options.fResult,
            {"ChosenPredictors", "Accuracy", "ConfusionMatrix", "WorstConfusions"});
  AddResultOptions(*model, options.fResult);
  AddSaveOptions(*model, "predictions", options.fSave);
  model
      ->add_option("--save-model", options.fSaveState,
                   "Keep the model for predselect score: .bin or .xml")
      ->type_name("FILE")
      ->check(IsStateName);
  model->add_option("--pmml", options.fModel.fPmml, "Write the model as PMML")->type_name("FILE");
  AddMemory(*model, " that train the model (default: auto)", options.fMemory);
  AddThreads(*model, options.fThreads);
  AddProgress(*model, options.fResult);
  AddDryRun(*model, options);
  model->footer(kModelExamples)->group(kShortVerbs);
  return model;
}

CLI::App* AddInspect(CLI::App& app, Options& options) {
  CLI::App* inspect = app.add_subcommand(
      "inspect", "Show what a state file holds: component, variables, counts, ranking or model");
  AddState(*inspect, "STATE", options, false);
  AddFormat(*inspect, options.fResult,
            {"Ranking", "Component", "Variables", "TargetCategories", "ExcludedPredictors"},
            "Ranking, or the first that there is");
  AddResultOptions(*inspect, options.fResult);
  inspect->footer(kInspectExamples)->group(kLanguage);
  return inspect;
}

// Without a file for the table the table is the result, in a format of data.
void CompleteScore(const CLI::App& score, Options& options) {
  if (!options.fSave.fFile.empty()) return;
  ResultOptions& result = options.fResult;
  const bool isSaid = score.count("--format") > 0 || MCHost::FormatOfPath(result.fFile);
  if (!isSaid) result.fFormat = FileFormat::kCsv;
  if (MCHost::NamesOf(result.fFormat).fbWritten) return;
  throw CLI::ValidationError("--format",
                             "predictions are written as csv, tsv, jsonl, markdown, parquet or "
                             "arrow; a page or document of what was scored takes --save-data FILE "
                             "for them");
}

CLI::App* AddScore(CLI::App& app, Options& options) {
  CLI::App* score = app.add_subcommand("score", "Predict new data with a saved Naive Bayes model");
  AddState(*score, "--model", options, false);
  AddDataOptions(*score, options.fData);
  CLI::Option* saved = AddSaveOptions(*score, "predictions", options.fSave);
  for (const char* own : {"--only-new", "--force"}) score->get_option(own)->remove_needs(saved);
  score->add_option("--predicted", options.fPredicted, "Name of the predicted value")
      ->type_name("NAME")
      ->capture_default_str();
  score
      ->add_option("--probabilities", options.fProbabilities,
                   "Root of the names of the predicted probabilities; \"\" for none")
      ->type_name("ROOT")
      ->capture_default_str();
  score
      ->add_option("--drift", options.fDrift,
                   "Write how the data differ from those that the model was built on, a row a "
                   "predictor: " +
                       MCHost::EndingsOf(&MCHost::FileFormatNames::fbWritten))
      ->type_name("FILE");
  AddThreads(*score, options.fThreads);
  AddFormat(*score, options.fResult, {"Scoring", "ScoringDrift"});
  AddResultOptions(*score, options.fResult);
  AddDryRun(*score, options);
  score->footer(kScoreExamples)->group(kShortVerbs);
  return score;
}

CLI::App* AddMerge(CLI::App& app, Options& options) {
  CLI::App* merge =
      app.add_subcommand("merge", "Bring together states that were counted over parts of the data");
  AddState(*merge, "STATE", options, true);
  InGroup(*merge, kResultsGroup);
  merge->add_option("-o,--output", options.fSaveState, "Write the merged state here: .bin or .xml")
      ->required()
      ->type_name("FILE")
      ->check(IsStateName);
  merge->add_flag("--allow-equal", options.fbAllowEqual,
                  "Take states that hold the very same counts, too");
  merge->footer(kMergeExamples)->group(kLanguage);
  return merge;
}

// From the last to the first. The columns of --id come last of all: where they end with the words
// that are still wanted for others, they leave them to these.
std::vector<std::string> ArgumentsOf(int argc, char** argv) {
  std::vector<std::string> others;
  std::vector<std::string> keys;
  bool isKey = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word.starts_with("-")) isKey = word == "--id";
    (isKey ? keys : others).push_back(word);
  }
  others.insert(others.end(), keys.begin(), keys.end());
  std::reverse(others.begin(), others.end());
  return others;
}

CLI::App* AddView(CLI::App& app, Options& options) {
  CLI::App* view =
      app.add_subcommand("view", "Look at a state file, or a JSON document, in a browser");
  view->add_option("FILE", options.fStates,
                   "State saved by run --save-state, or a document of --format json")
      ->required()
      ->expected(1)
      ->type_name("FILE");
  view->add_option("-o,--output", options.fResult.fFile, "Write the report here instead")
      ->type_name("FILE");
  view->footer(kViewExamples)->group(kLanguage);
  return view;
}

CLI::App* AddRun(CLI::App& app, Options& options) {
  CLI::App* run = app.add_subcommand("run", "Run commands over a table");
  AddDataOptions(*run, options.fData);
  AddWeight(*run, options.fData);
  InGroup(*run, "Commands");
  CLI::Option* text =
      run->add_option("-c,--command", options.fCommandTexts,
                      "The commands to run; several are run in order, as of one text")
          ->type_name("TEXT")
          ->allow_extra_args(false);
  run->add_option("-f,--file", options.fCommandFile, "File that holds them; - is standard input")
      ->type_name("FILE")
      ->excludes(text);
  AddFormat(*run, options.fResult,
            {"PredictorSummary", "PredictorEffects", "SubsetSummary", "Classification",
             "SelectedPredictors", "ExcludedPredictors", "CaseProcessingSummary"},
            "PredictorSummary of SELECTPRED, SubsetSummary of NAIVEBAYES");
  AddResultOptions(*run, options.fResult);
  AddSaveOptions(*run, "new variables", options.fSave);
  run->add_option("--save-state", options.fSaveState,
                  "Save what the last command's engine has counted: .bin or .xml")
      ->type_name("FILE")
      ->check(IsStateName);
  run->add_option("--results", options.fResults,
                  "Write rankings and subsets as XML documents into this directory")
      ->type_name("DIR");
  run->add_option("--charts", options.fCharts,
                  "Draw charts into this directory, as SVG and PNG (with the Python package "
                  "vl-convert-python)")
      ->type_name("DIR");
  AddMemory(*run, " of a NAIVEBAYES command that states no MEMALLOCATE (default: 1024)",
            options.fMemory);
  AddThreads(*run, options.fThreads);
  AddProgress(*run, options.fResult);
  AddDryRun(*run, options);
  run->footer(kRunExamples)->group(kLanguage);
  return run;
}

CLI::App* AddDescribe(CLI::App& app, Options& options) {
  CLI::App* describe = app.add_subcommand(
      "describe", "Show what a file holds: a line a column, with its distribution");
  AddDataOptions(*describe, options.fData);
  AddWeight(*describe, options.fData);
  InGroup(*describe, kResultsGroup);
  describe
      ->add_option("--top", options.fDescribe.fTop,
                   "A line for so many columns; 0 for all (default)")
      ->check(WholeNumber(0))
      ->type_name("N");
  AddThreads(*describe, options.fThreads);
  AddFormat(
      *describe, options.fResult,
      {"Dictionary", "MostFrequent", "ScaleVariables", "TimeVariables", "CategoricalVariables"});
  AddResultOptions(*describe, options.fResult);
  describe->footer(kDescribeExamples)->group(kShortVerbs);
  return describe;
}

CLI::App* AddHelp(CLI::App& app, std::string& topic, ResultOptions& result) {
  CLI::App* help = app.add_subcommand("help", "Show all about a verb, or about a command");
  std::string topics;
  for (const CLI::App* verb : app.get_subcommands({})) topics += verb->get_name() + "|";
  for (const auto& [name, text] : kCommandHelp) topics += std::string(name) + "|";
  help->add_option("TOPIC", topic, "A verb, SELECTPRED or NAIVEBAYES; none for an overview")
      ->type_name(topics.substr(0, topics.size() - 1));
  AddPager(*help, result);
  help->footer("")->group(kHelpVerbs);
  return help;
}

CLI::App* AddCompletion(CLI::App& app, std::string& shell) {
  CLI::App* completion = app.add_subcommand(
      "completion", "Write what a shell needs to complete verbs and options, or the manual page");
  completion->add_option("SHELL", shell, "bash, zsh or fish; man for the manual page")
      ->required()
      ->type_name("bash|zsh|fish|man");
  completion->footer(kCompletionExamples)->group(kHelpVerbs);
  return completion;
}

// The program's verbs, and what they read their options into.
struct CommandLine {
  explicit CommandLine(Options& options) {
    fApp.formatter_fn([](const CLI::App* app, const std::string&, CLI::AppFormatMode) {
      return app->get_parent() == nullptr ? HelpPage(DescribeProgram(*app))
                                          : HelpPage(DescribeVerb(*app));
    });
    fApp.set_help_flag("-h,--help", "Show this help");
    fApp.set_version_flag("--version", std::string("predselect ") + PredSelect::Version(),
                          "Show the program's version");
    fApp.require_subcommand(1);
    fActions = {{AddDescribe(fApp, options), Options::kDescribe},
                {AddRank(fApp, options), Options::kRank},
                {AddModel(fApp, options), Options::kModel},
                {AddScore(fApp, options), Options::kScore},
                {AddRun(fApp, options), Options::kRun},
                {AddInspect(fApp, options), Options::kInspect},
                {AddMerge(fApp, options), Options::kMerge},
                {AddView(fApp, options), Options::kView}};
    fpHelp = AddHelp(fApp, fTopic, options.fResult);
    fpCompletion = AddCompletion(fApp, fShell);
    fApp.footer(kProgramNotes);
  }
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  // The verb of that name, null for none.
  const CLI::App* Verb(const std::string& name) const {
    for (const CLI::App* verb : fApp.get_subcommands({})) {
      if (verb->get_name() == name) return verb;
    }
    return nullptr;
  }

  CLI::App fApp{kDescription, "predselect"};
  std::vector<std::pair<CLI::App*, Options::Action>> fActions;
  CLI::App* fpHelp = nullptr;
  CLI::App* fpCompletion = nullptr;
  std::string fTopic;
  std::string fShell;
};

std::string TextOn(const CommandLine& line) {
  const std::string& topic = line.fTopic;
  if (topic.empty()) return HelpPage(DescribeProgram(line.fApp));
  if (const CLI::App* verb = line.Verb(topic)) return HelpPage(DescribeVerb(*verb));
  std::vector<std::string> known;
  for (const auto& [name, text] : kCommandHelp) {
    if (AreStringsEqualCase(name, topic)) return text;
    known.emplace_back(name);
  }
  for (const CLI::App* verb : line.fApp.get_subcommands({})) known.push_back(verb->get_name());
  const std::string hint = MCHost::DidYouMean(topic, known);
  throw CLI::ValidationError("help",
                             "there is nothing on \"" + topic + "\"" +
                                 (hint.empty() ? "; predselect help lists the verbs" : hint));
}

std::string ShellText(const CommandLine& line) {
  const HelpProgram program = DescribeProgram(line.fApp);
  if (line.fShell == "bash") return BashCompletion(program);
  if (line.fShell == "zsh") return ZshCompletion(program);
  if (line.fShell == "fish") return FishCompletion(program);
  if (line.fShell == "man") return ManPage(program);
  throw CLI::ValidationError("completion",
                             "\"" + line.fShell + "\" is none of bash, zsh, fish and man");
}

// The columns that options name. An empty name is that of an option which was not given.
std::vector<std::pair<std::string, std::string>> NamesIn(const Options& options) {
  std::vector<std::pair<std::string, std::string>> names = {
      {"", options.fRank.fTarget},
      {"", options.fModel.fTarget},
      {"training-column", options.fModel.fTrainingColumn},
      {"weight", options.fData.fWeight}};
  for (const std::string& name : options.fRank.fExcept) names.emplace_back("except", name);
  for (const std::string& name : options.fModel.fExcept) names.emplace_back("except", name);
  for (const std::string& name : options.fSave.fKeys) names.emplace_back("id", name);
  for (const std::string& level : options.fData.fLevels) {
    const std::size_t equals = level.rfind('=');
    if (equals != std::string::npos) names.emplace_back("level", level.substr(0, equals));
  }
  std::erase_if(names, [](const auto& name) { return name.second.empty(); });
  return names;
}

// What depends on several options, and what is settled when all are known.
void Complete(const CommandLine& line, Options& options) {
  for (const auto& [command, action] : line.fActions) {
    if (!command->parsed()) continue;
    options.fAction = action;
    if (action == Options::kMerge || action == Options::kView) continue;
    CompleteFormat(*command, options.fResult);
    if (action == Options::kScore) CompleteScore(*command, options);
    const bool isPage = options.fResult.fFormat == FileFormat::kText;
    if (action == Options::kRank && isPage && command->count("--top") == 0) {
      options.fRank.fTop = kPageRows;
    }
  }
  if (options.fAction == Options::kRun && options.fCommandTexts.empty() &&
      options.fCommandFile.empty()) {
    throw CLI::RequiredError("-c or -f");
  }
  options.fData.fbSaved = options.fAction == Options::kScore || !options.fSave.fFile.empty();
  options.fData.fNames = NamesIn(options);
  RefuseOneFileForTwo(options);
  const bool isJson = options.fResult.fFormat == FileFormat::kJson && options.fResult.fFile.empty();
  if (options.fbDryRun && isJson) {
    throw CLI::ValidationError("--dry-run",
                               "what would be done is shown as text, not as a JSON document; "
                               "leave out --format json");
  }
  if (line.fpHelp->parsed()) options.fShown = TextOn(line);
  if (line.fpCompletion->parsed()) options.fShown = ShellText(line);
}

// What the parser could not take, and where to read on.
UsageError Explain(const CommandLine& line, const CLI::ParseError& error,
                   const std::vector<std::string>& words) {
  const HelpProgram program = DescribeProgram(line.fApp);
  std::string text = UnknownVerb(program, words.front());
  const CLI::App* verb = line.Verb(words.front());
  if (text.empty()) {
    const std::vector<HelpOption> known =
        verb == nullptr ? program.fOptions : DescribeVerb(*verb).fOptions;
    text = UnknownOption(known, words);
  }
  if (text.empty()) text = PlainUsageError(error.what());
  if (verb == nullptr) return UsageError(text, "\"predselect help\" lists the verbs.\n");
  return UsageError(text, "Usage: " + DescribeVerb(*verb).fUsage + "\n\"predselect help " +
                              words.front() + "\" tells more.\n");
}

void Parse(int argc, char** argv, Options& options) {
  CommandLine line(options);
  try {
    line.fApp.parse(ArgumentsOf(argc, argv));
    Complete(line, options);
  } catch (const CLI::CallForHelp&) {
    options.fShown = line.fApp.help();
  } catch (const CLI::CallForVersion& version) {
    options.fShown = std::string(version.what()) + "\n";
  } catch (const CLI::ParseError& error) {
    if (argc < 2) throw UsageError("", ShortHelp(DescribeProgram(line.fApp)));
    throw Explain(line, error, {argv + 1, argv + argc});
  }
}

}  // namespace

void ParseOptions(int argc, char** argv, Options& options) {
  try {
    Parse(argc, argv, options);
  } catch (const UsageError&) {
    options.fAction = Options::kNone;
    throw;
  }
}

}  // namespace PredSelectApp
