#include "apps/predselect/OptionGroups.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "apps/predselect/MemorySize.h"
#include "host/session/HostFunctions.h"
#include "operations/AvailableThreads.h"

namespace PredSelectApp {

using MCHost::FileFormat;

namespace {

constexpr int kMostJobs = 256;

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

bool KnowsTable(const std::vector<std::string>& tables, const std::string& name) {
  return std::ranges::any_of(
      tables, [&name](const std::string& table) { return AreStringsEqualCase(table, name); });
}

std::string JoinedNames(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

}  // namespace

void AddDataOptions(CLI::App& command, DataOptions& data) {
  InGroup(command, kDataGroup);
  command
      .add_option(
          "--data,FILE", data.fFile,
          "Data file: .csv, .tsv, .parquet, .arrow, .feather, .jsonl, .json, .xlsx or .ods; a "
          "folder, "
          "or a pattern in quotes such as \"parts/*.csv\", is all its files as one table; - is "
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
                  "One more text that means null in text, JSON and workbooks (besides NA, NULL, ...)")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command.add_flag("--stream", data.fbStream,
                   "Read the file again on every pass instead of keeping it in memory");
  AddReadingOptions(command, data.fReading);
}

void AddWeight(CLI::App& command, DataOptions& data) {
  InGroup(command, kDataGroup);
  command
      .add_option("--weight", data.fWeight, "Column that says for how many cases each row stands")
      ->type_name("VAR");
}

void AddPart(CLI::App& command, DataOptions& data) {
  command
      .add_option("--part", data.fPart,
                  "The number of this part among the parts of the data, from 0: their order")
      ->check(WholeNumber(0))
      ->type_name("N");
}

void AddUsing(CLI::App& command, DataOptions& data) {
  InGroup(command, kDataGroup);
  command
      .add_option("--using", data.fUsing,
                  "The data are a part: count it with these ranges of all parts (predselect range)")
      ->type_name("RANGES");
  AddPart(command, data);
  command.get_option("--part")->needs("--using");
}

void AddJobs(CLI::App& command, Options& options) {
  InGroup(command, kWorkGroup);
  command
      .add_option(
          "--jobs", options.fJobs,
          "Processes that share the files of the data, which changes no result (default: 1)")
      ->check(WholeNumber(1, kMostJobs))
      ->type_name("N");
  command.add_option("--serve-parts", options.fServing, "Be one of so many processes of another")
      ->check(WholeNumber(1, kMostJobs))
      ->group("");
}

void AddFormat(CLI::App& command, ResultOptions& result, const std::vector<std::string>& tables,
               const std::string& mains) {
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

std::function<std::string(const std::string&)> WholeNumber(int least, int most) {
  return [least, most](const std::string& text) -> std::string {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && rest == end;
    if (isNumber && number >= least && number <= most) return "";
    if (error == std::errc::result_out_of_range && !text.starts_with('-')) {
      return "\"" + text + "\" is above " + std::to_string(most);
    }
    const std::string bounds =
        most == std::numeric_limits<int>::max()
            ? "of at least " + std::to_string(least)
            : "from " + std::to_string(least) + " to " + std::to_string(most);
    return "\"" + text + "\" is not a whole number " + bounds;
  };
}

void AddMemory(CLI::App& command, const std::string& of, Options& options) {
  InGroup(command, kWorkGroup);
  const auto take = [&options](const std::string& text) {
    const std::optional<double> size = ParseMemorySize(text);
    if (!size && text != "auto") {
      throw CLI::ValidationError(
          "--memory", "\"" + text +
                          "\" is neither auto nor a size of at least 4K, such as 512M, 2G "
                          "or 4096 (kilobytes)");
    }
    options.fMemory = size.value_or(Options::kAutoMemory);
    if (size) options.fData.fMaxKeptBytes = KeptBytesWithin(*size);
  };
  command
      .add_option_function<std::string>(
          "--memory", take,
          "Memory for the table and the cases" + of +
              ": 512M, 2G, 4096 (kilobytes), or auto for half of what is free beside the table")
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

std::string IsStateName(const std::string& name) {
  for (const char* ending : {".bin", ".xml"}) {
    if (name.size() > 4 && name.ends_with(ending)) return "";
  }
  return "\"" + name + "\": a state file is named .bin or .xml";
}

void AddSignKey(CLI::App& command, Options& options, CLI::Option* saved) {
  command
      .add_option("--sign-key", options.fSignKey,
                  "Sign the file of " + saved->get_name(false, true) +
                      " with the key in this file: 16 bytes or more that nobody else may read")
      ->type_name("FILE")
      ->needs(saved);
}

void AddVerifyKey(CLI::App& command, Options& options) {
  command
      .add_option("--verify-key", options.fVerifyKey,
                  "Take only states that were signed with the key in this file")
      ->type_name("FILE");
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
  AddVerifyKey(command, options);
}

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

}  // namespace PredSelectApp
