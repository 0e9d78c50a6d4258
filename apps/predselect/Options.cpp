#include "apps/predselect/Options.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/FileUses.h"
#include "apps/predselect/MemorySize.h"
#include "apps/predselect/Terminal.h"
#include "host/session/SameFile.h"
#include "operations/AvailableThreads.h"
#include "operations/Version.h"

namespace PredSelectApp {

namespace {

constexpr int kPageRows = 20;  // of a ranking, unless more are asked for

constexpr const char* kDescription =
    "Which columns carry information about a target, and which few of them make a good classifier.";

constexpr const char* kExamples = R"(Examples:
  What is in the file?
    predselect describe penguins.csv

  Which columns go with a target? Which few predict it, and how well?
    predselect rank penguins.csv species
    predselect model penguins.csv species --save-model model.bin

  The same with the command language, for some columns:
    predselect run --data penguins.csv \
      -c "SELECTPRED species BY island sex WITH bill_length_mm body_mass_g"

  The same as a JSON document, with labels and levels from a Table Schema:
    predselect run --data penguins.csv --schema penguins.schema.json --format json \
      -c "SELECTPRED species" -o result.json

  Weighted cases, commands from a file, a table too large for memory:
    predselect run --data survey.parquet --weight n --stream -f commands.txt

  Count parts of the data apart, bring them together, see the ranking:
    predselect run --data part1.csv -c "SELECTPRED income" --save-state part1.bin
    predselect merge part1.bin part2.bin -o all.bin
    predselect inspect all.bin

  Keep a model and predict new data with it:
    predselect model old.csv income --save-model model.bin
    predselect score --model model.bin new.csv --save-data predicted.csv

  Take the model elsewhere: as a query, a C file, PMML, ONNX or JSON.
    predselect export model.bin -o model.sql --table clients

  Its predictions alone, beside the columns that tell the cases apart:
    predselect score --model model.bin --data new.csv --save-data keyed.csv --only-new --id id

Exit codes: 0 all commands completed, 1 a command reported an error, 2 wrong usage,
3 data could not be read or written, 70 internal error, 130 cancelled.
"predselect run --help" tells the options and the syntax of the commands.)";

constexpr const char* kCommandSyntax =
#include "apps/predselect/CommandSyntax.inc"
    ;

constexpr const char* kRunNotes = R"(
  A command ends with a period at the end of a line. Neither BY nor WITH: every other variable
  is a candidate. Lists take "a TO c" and ALL. docs/commands.md has the whole reference.)";

// CLI11 reports what it could not take; the reader needs to know where help is.
int ReportUsage(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) return app.exit(error);
  PrintError(std::string("predselect: ") + error.what());
  PrintError("Try \"predselect --help\".");
  return kWrongUsage;
}

void AddDataOptions(CLI::App& command, DataOptions& data) {
  command
      .add_option("--data,FILE", data.fFile,
                  "Data file: .csv, .tsv, .parquet, .arrow or .feather; - is CSV on standard "
                  "input; with or without --data before it")
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
                  "One more text that means null in CSV and TSV (besides nothing, NA, NaN, null)")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command.add_flag("--stream", data.fbStream,
                   "Read the file again on every pass instead of keeping it in memory");
}

void AddWeight(CLI::App& command, DataOptions& data) {
  command.add_option("--weight", data.fWeight, "Frequency weight variable")->type_name("VAR");
}

// An option that takes one of a few words.
template <class Value>
void AddChoice(CLI::App& command, const std::string& name, Value& value,
               const std::vector<std::pair<std::string, Value>>& choices, const std::string& help) {
  std::string words;
  for (const auto& choice : choices) words += (words.empty() ? "" : "|") + choice.first;
  const auto take = [&value, choices, words, name](const std::string& word) {
    for (const auto& choice : choices) {
      if (choice.first == word) {
        value = choice.second;
        return;
      }
    }
    throw CLI::ValidationError(name, "\"" + word + "\" is none of " + words);
  };
  command.add_option_function<std::string>(name, take, help)->type_name(words);
}

void AddFormat(CLI::App& command, ResultOptions& result) {
  AddChoice<OutputFormat>(command, "--format", result.fFormat,
                          {{"text", OutputFormat::kText}, {"json", OutputFormat::kJson}},
                          "A page to read (default), or a document for programs");
}

// Of a command whose result is one flat table.
void AddFlatFormat(CLI::App& command, ResultOptions& result) {
  AddChoice<OutputFormat>(
      command, "--format", result.fFormat,
      {{"text", OutputFormat::kText},
       {"json", OutputFormat::kJson},
       {"csv", OutputFormat::kCsv},
       {"tsv", OutputFormat::kTsv},
       {"jsonl", OutputFormat::kJsonLines},
       {"markdown", OutputFormat::kMarkdown}},
      "A page to read (default), a document for programs, or the table alone, a record a line; "
      "without it the extension of --output decides: .json, .csv, .tsv, .jsonl, .md, .parquet, "
      ".arrow, .feather");
}

OutputFormat FormatOf(const std::string& path) {
  constexpr std::pair<const char*, OutputFormat> kEndings[] = {
      {".json", OutputFormat::kJson},     {".csv", OutputFormat::kCsv},
      {".tsv", OutputFormat::kTsv},       {".jsonl", OutputFormat::kJsonLines},
      {".md", OutputFormat::kMarkdown},   {".parquet", OutputFormat::kColumns},
      {".arrow", OutputFormat::kColumns}, {".feather", OutputFormat::kColumns}};
  for (const auto& [ending, format] : kEndings) {
    if (path.ends_with(ending)) return format;
  }
  return OutputFormat::kText;
}

void AddResultOptions(CLI::App& command, ResultOptions& result) {
  command
      .add_option("-o,--output", result.fFile, "Write the results here (default: standard output)")
      ->type_name("FILE");
  AddChoice<Color>(command, "--color", result.fColor,
                   {{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}},
                   "Colours in text (default: auto, on a terminal only)");
  command.add_flag("--quiet", result.fbQuiet, "No warnings and no progress on standard error");
}

void AddMemory(CLI::App& command, double& memory) {
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
          "Memory for the cases of a NAIVEBAYES command that states no MEMALLOCATE: 512M, 2G, 4096 "
          "(kilobytes), or auto for half of what is free (default: 1024)")
      ->type_name("SIZE|auto");
}

void AddThreads(CLI::App& command, int& threads) {
  command
      .add_option("--threads", threads,
                  "Threads at work at once, which changes no result (default: one for each "
                  "processor)")
      ->check(CLI::Range(1, PredSelect::kMostThreads))
      ->type_name("N");
}

CLI::Option* AddSaveOptions(CLI::App& command, const std::string& what, SaveOptions& save) {
  CLI::Option* file = command.add_option(
      "--save-data", save.fFile,
      "Write the table with the " + what + ": .csv, .tsv, .parquet, .arrow or .feather");
  file->type_name("FILE");
  CLI::Option* onlyNew =
      command.add_flag("--only-new", save.fbOnlyNew, "Save the " + what + " alone")->needs(file);
  command.add_option("--id", save.fKeys, "Save these columns of the data before them")
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
  command.add_option(name, options.fStates, "State saved by run --save-state")
      ->required()
      ->expected(several ? 2 : 1, several ? CLI::detail::expected_max_vector_size : 1)
      ->allow_extra_args(several)
      ->type_name("STATE");
}

// What ranks or models a target that is named, besides the data.
void AddTarget(CLI::App& command, Options& options, std::string& target,
               std::vector<std::string>& except) {
  command.add_option("TARGET", target, "The variable to be predicted")
      ->required()
      ->type_name("VAR");
  command.add_option("--except", except, "Leave this column out; may be repeated")
      ->type_name("VAR")
      ->allow_extra_args(false);
  command.add_flag("--show-command", options.fbShowCommand,
                   "Show the command that this stands for instead of running it");
}

void AddProgress(CLI::App& command, ResultOptions& result) {
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
                   "Show so many; 0 for all (default: 20 on a page, else all)")
      ->check(CLI::NonNegativeNumber)
      ->type_name("N");
  AddThreads(*rank, options.fThreads);
  AddFlatFormat(*rank, options.fResult);
  AddResultOptions(*rank, options.fResult);
  AddProgress(*rank, options.fResult);
  return rank;
}

// Empty, or why a state cannot be saved under the name.
std::string IsStateName(const std::string& name) {
  for (const char* ending : {".bin", ".xml"}) {
    if (name.size() > 4 && name.ends_with(ending)) return "";
  }
  return "\"" + name + "\": a state file is named .bin or .xml";
}

// What depends on several options, where they do not say it themselves.
void CompleteRank(const CLI::App& rank, Options& options) {
  OutputFormat& format = options.fResult.fFormat;
  const bool isCommand = options.fbShowCommand;
  if (rank.count("--format") == 0 && !isCommand) format = FormatOf(options.fResult.fFile);
  if (rank.count("--top") == 0 && format == OutputFormat::kText) options.fRank.fTop = kPageRows;
}

// The model of a run.
void AddExportFile(CLI::App& command, Options& options) {
  command
      .add_option("--export", options.fExport.fFile,
                  "Write the model for other programs: .pmml, .xml, .onnx, .sql, .c or .json")
      ->type_name("FILE");
}

CLI::App* AddModel(CLI::App& app, Options& options) {
  CLI::App* model = app.add_subcommand(
      "model", "Build a classifier of a target from the few columns that serve it best");
  AddDataOptions(*model, options.fData);
  AddWeight(*model, options.fData);
  AddTarget(*model, options, options.fModel.fTarget, options.fModel.fExcept);
  CLI::Option* test =
      model
          ->add_option("--test", options.fModel.fTest,
                       "Share of the cases, drawn at random, that test the model; 0 for none")
          ->check(CLI::Range(0.0, 0.99))
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
      ->check(CLI::PositiveNumber)
      ->type_name("N");
  AddFormat(*model, options.fResult);
  AddResultOptions(*model, options.fResult);
  AddSaveOptions(*model, "predictions", options.fSave);
  model
      ->add_option("--save-model", options.fSaveState,
                   "Keep the model for predselect score: .bin or .xml")
      ->type_name("FILE")
      ->check(IsStateName);
  AddExportFile(*model, options);
  model->add_option("--pmml", options.fModel.fPmml, "Write the model as PMML")->type_name("FILE");
  AddThreads(*model, options.fThreads);
  AddProgress(*model, options.fResult);
  return model;
}

CLI::App* AddInspect(CLI::App& app, Options& options) {
  CLI::App* inspect = app.add_subcommand(
      "inspect", "Show what a state file holds: component, variables, counts, ranking or model");
  AddState(*inspect, "state", options, false);
  AddFormat(*inspect, options.fResult);
  AddResultOptions(*inspect, options.fResult);
  return inspect;
}

CLI::App* AddScore(CLI::App& app, Options& options) {
  CLI::App* score = app.add_subcommand("score", "Predict new data with a saved Naive Bayes model");
  AddState(*score, "--model", options, false);
  AddDataOptions(*score, options.fData);
  AddSaveOptions(*score, "predictions", options.fSave)->required();
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
                   "predictor: .csv, .tsv, .parquet or .feather")
      ->type_name("FILE");
  AddThreads(*score, options.fThreads);
  AddFormat(*score, options.fResult);
  AddResultOptions(*score, options.fResult);
  return score;
}

std::string JoinedWords(const std::vector<std::string>& words) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : "|") + word;
  return joined;
}

CLI::App* AddExport(CLI::App& app, Options& options) {
  CLI::App* command =
      app.add_subcommand("export", "Write a saved Naive Bayes model as PMML, ONNX, SQL, C or JSON");
  AddState(*command, "state", options, false);
  command->add_option("-o,--output", options.fExport.fFile, "Write the model here")
      ->required()
      ->type_name("FILE");
  command
      ->add_option("--to", options.fExport.fTo,
                   "The form of the model; without it the ending of --output decides: .pmml, .xml, "
                   ".onnx, .sql, .c, .json")
      ->check(CLI::IsMember(PredSelect::ExportFormats()))
      ->type_name(JoinedWords(PredSelect::ExportFormats()));
  command->add_option("--table", options.fExport.fTable, "The table that the SQL query reads")
      ->capture_default_str()
      ->type_name("NAME");
  command->add_flag("--quiet", options.fResult.fbQuiet,
                    "Do not say what the form cannot say of the model");
  return command;
}

CLI::App* AddMerge(CLI::App& app, Options& options) {
  CLI::App* merge =
      app.add_subcommand("merge", "Bring together states that were counted over parts of the data");
  AddState(*merge, "states", options, true);
  merge->add_option("-o,--output", options.fSaveState, "Write the merged state here: .bin or .xml")
      ->required()
      ->type_name("FILE")
      ->check(IsStateName);
  merge->add_flag("--allow-equal", options.fbAllowEqual,
                  "Take states that hold the very same counts, too");
  return merge;
}

}  // namespace

Options ParseOptions(int argc, char** argv) {
  Options options;
  CLI::App app(kDescription, "predselect");
  app.footer(kExamples);
  app.set_version_flag("--version", std::string("predselect ") + PredSelect::Version());
  app.require_subcommand(1);

  CLI::App* run = app.add_subcommand("run", "Run commands over a table");
  AddDataOptions(*run, options.fData);
  AddWeight(*run, options.fData);
  CLI::Option* text =
      run->add_option("-c,--command", options.fCommandTexts,
                      "The commands to run; several are run in order, as of one text")
          ->type_name("TEXT")
          ->allow_extra_args(false);
  run->add_option("-f,--file", options.fCommandFile, "File that holds them; - is standard input")
      ->type_name("FILE")
      ->excludes(text);
  AddFormat(*run, options.fResult);
  AddResultOptions(*run, options.fResult);
  AddSaveOptions(*run, "new variables", options.fSave);
  run->add_option("--save-state", options.fSaveState,
                  "Save what the last command's engine has counted: .bin or .xml")
      ->type_name("FILE")
      ->check(IsStateName);
  AddExportFile(*run, options);
  run->add_option("--results", options.fResults,
                  "Write rankings and subsets as XML documents into this directory")
      ->type_name("DIR");
  AddMemory(*run, options.fMemory);
  AddThreads(*run, options.fThreads);
  AddProgress(*run, options.fResult);
  run->footer(std::string("Commands:\n") + kCommandSyntax + kRunNotes);

  CLI::App* describe = app.add_subcommand(
      "describe", "Show the dictionary: names, levels, ranges, categories, missing values");
  AddDataOptions(*describe, options.fData);
  AddWeight(*describe, options.fData);
  AddFormat(*describe, options.fResult);
  AddResultOptions(*describe, options.fResult);

  CLI::App* rank = AddRank(app, options);
  CLI::App* model = AddModel(app, options);
  CLI::App* inspect = AddInspect(app, options);
  CLI::App* score = AddScore(app, options);
  CLI::App* merge = AddMerge(app, options);
  CLI::App* exported = AddExport(app, options);

  try {
    app.parse(argc, argv);
    if (run->parsed() && options.fCommandTexts.empty() && options.fCommandFile.empty()) {
      throw CLI::RequiredError("-c or -f");
    }
    const std::pair<CLI::App*, Options::Action> actions[] = {
        {run, Options::kRun},           {rank, Options::kRank},       {model, Options::kModel},
        {describe, Options::kDescribe}, {inspect, Options::kInspect}, {score, Options::kScore},
        {merge, Options::kMerge},       {exported, Options::kExport}};
    for (const auto& [command, action] : actions) {
      if (command->parsed()) options.fAction = action;
    }
    if (rank->parsed()) CompleteRank(*rank, options);
    options.fData.fbSaved = !options.fSave.fFile.empty();
    RefuseOneFileForTwo(options);
  } catch (const CLI::ParseError& error) {
    options.fAction = Options::kNone;
    options.fExitCode = ReportUsage(app, error);
  }
  return options;
}

}  // namespace PredSelectApp
