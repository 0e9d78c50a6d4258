#include "apps/predselect/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
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
#include "apps/predselect/OptionGroups.h"
#include "apps/predselect/UsageError.h"
#include "apps/predselect/UsageReport.h"
#include "apps/predselect/VerbOptions.h"
#include "host/session/HostFunctions.h"
#include "host/session/SameFile.h"
#include "host/text/KeywordMatch.h"
#include "operations/Version.h"

namespace PredSelectApp {

namespace {

using MCHost::FileFormat;

constexpr int kPageRows = 20;  // of a ranking, unless more are asked for

constexpr const char* kHelpVerbs = "Help";

bool HasRecords(FileFormat format) {
  return format != FileFormat::kText && format != FileFormat::kJson && format != FileFormat::kHtml;
}

// What --format is without a word.
void CompleteFormat(const CLI::App& command, ResultOptions& result) {
  if (command.count("--format") == 0) {
    const std::optional<FileFormat> format = MCHost::FormatOfPath(result.fFile);
    const bool isKnown = format && MCHost::NamesOf(*format).fbResult;
    if (format && !isKnown) {
      throw CLI::ValidationError(
          "--output", "\"" + result.fFile + "\": a workbook is not written; " +
                          MCHost::EndingsOf(&MCHost::FileFormatNames::fbResult) + " are");
    }
    result.fFormat = isKnown ? *format : FileFormat::kText;
  }
  if (!result.fTable.empty() && !HasRecords(result.fFormat)) {
    throw CLI::ValidationError("--table",
                               "a page, a report and a JSON document have all tables; say csv, "
                               "or another format of one table, with --format");
  }
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

// What needs the cases at one place, or says what --jobs finds.
void RefuseBesideJobs(const Options& options) {
  if (options.fJobs < 2) return;
  struct Refused {
    bool fbGiven;
    const char* fOption;
    const char* fReason;
  };
  const Refused known[] = {
      {!options.fSave.fFile.empty(), "--save-data",
       "it needs the cases at one place; keep the model (--save-model), and predict with score"},
      {options.fModel.fFolds > 0, "--cross-validate",
       "it needs the cases at one place; hold test cases out (--test)"},
      {options.fCalibration.fMethod != MCHost::CalibrationWish::kNone, "--calibrate",
       "it needs the cases at one place; calibrate a model of some of the files"},
      {!options.fData.fUsing.empty(), "--using",
       "the files are all the parts, and their ranges are found anew"}};
  for (const Refused& one : known) {
    if (!one.fbGiven) continue;
    throw CLI::ValidationError(one.fOption, std::string("not with --jobs: ") + one.fReason);
  }
}

constexpr std::pair<const char*, const char*> kCommandHelp[] = {
#include "apps/predselect/CommandHelp.inc"
};

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

constexpr const char* kExplain = "--explain";
constexpr const char* kExplained = "3";  // predictors, unless a number follows

bool IsNumber(const std::string& word) {
  return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
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
    const bool isCounted = i + 1 < argc && IsNumber(argv[i + 1]);
    if (word == kExplain && !isCounted) others.emplace_back(kExplained);
  }
  others.insert(others.end(), keys.begin(), keys.end());
  std::reverse(others.begin(), others.end());
  return others;
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
                {AddEvaluate(fApp, options), Options::kEvaluate},
                {AddRun(fApp, options), Options::kRun},
                {AddInspect(fApp, options), Options::kInspect},
                {AddMerge(fApp, options), Options::kMerge},
                {AddRange(fApp, options), Options::kRange},
                {AddExport(fApp, options), Options::kExport},
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
    if (command->get_option_no_throw("--format") == nullptr) continue;
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
  RefuseBesideJobs(options);
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
  options.fWords.assign(argv, argv + argc);
  try {
    Parse(argc, argv, options);
  } catch (const UsageError&) {
    options.fAction = Options::kNone;
    throw;
  }
}

}  // namespace PredSelectApp
