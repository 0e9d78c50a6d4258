#include "apps/predselect/VerbOptions.h"

#include <charconv>
#include <string>
#include <vector>

#include "apps/predselect/Examples.h"
#include "apps/predselect/OptionGroups.h"
#include "naivebayes/validation/NBCrossValidation.h"
#include "operations/ModelFile.h"

namespace PredSelectApp {

namespace {

constexpr const char* kShortVerbs = "Verbs";
constexpr const char* kLanguage = "The command language, and saved states";

std::string IsShare(const std::string& text) {
  double share = 0.0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, share);
  const bool isShare = error == std::errc() && rest == end && share >= 0.0 && share <= 0.99;
  const bool isTooSmall = isShare && share > 0.0 && share < PredSelect::kLeastTestShare;
  if (isTooSmall) return "\"" + text + "\" is next to nothing; give 0";
  return isShare ? "" : "\"" + text + "\" is not a share from 0 to 0.99, such as 0.3";
}

// The model of a run.
void AddExportFile(CLI::App& command, Options& options) {
  command
      .add_option("--export", options.fExport.fFile,
                  "Write the model for other programs: .pmml, .xml, .onnx, .sql, .c or .json")
      ->type_name("FILE");
}

void AddCalibration(CLI::App& command, MCHost::CalibrationWish& wish) {
  using MCHost::CalibrationWish;
  AddChoice<CalibrationWish::Method>(
      command, "--calibrate", wish.fMethod,
      {{"temperature", CalibrationWish::kTemperature}, {"isotonic", CalibrationWish::kIsotonic}},
      "Make the model's probabilities hold what they say, by the test cases; without any by "
      "cross-validation");
  command
      .add_option("--calibration-seed", wish.fSeed,
                  "How training cases are divided for that (default: 1)")
      ->check(WholeNumber(0))
      ->type_name("N")
      ->needs("--calibrate");
}

}  // namespace

CLI::App* AddDescribe(CLI::App& app, Options& options) {
  CLI::App* describe = app.add_subcommand(
      "describe", "Show what a file holds: a line a column, with its distribution");
  AddDataOptions(*describe, options.fData);
  InGroup(*describe, kResultsGroup);
  describe
      ->add_option("--top", options.fDescribe.fTop,
                   "The first N columns alone; 0 for all (default)")
      ->check(WholeNumber(0))
      ->type_name("N");
  AddThreads(*describe, options.fThreads);
  AddFormat(*describe, options.fResult,
            {"Dictionary", "MostFrequent", "ScaleVariables", "TimeVariables",
             "CategoricalVariables", "MissingPatterns"});
  AddResultOptions(*describe, options.fResult);
  describe->footer(kDescribeExamples)->group(kShortVerbs);
  return describe;
}

CLI::App* AddRank(CLI::App& app, Options& options) {
  using PredSelect::RankBy;
  CLI::App* rank = app.add_subcommand(
      "rank", "Rank the columns of a file by how each goes with a target, the best first");
  AddDataOptions(*rank, options.fData);
  AddWeight(*rank, options.fData);
  AddUsing(*rank, options.fData);
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
  AddJobs(*rank, options);
  AddFormat(*rank, options.fResult, {"Ranking"});
  AddResultOptions(*rank, options.fResult);
  AddProgress(*rank, options.fResult);
  AddDryRun(*rank, options);
  rank->footer(kRankExamples)->group(kShortVerbs);
  return rank;
}

CLI::App* AddModel(CLI::App& app, Options& options) {
  CLI::App* model = app.add_subcommand(
      "model", "Build a classifier of a target from the few columns that serve it best");
  AddDataOptions(*model, options.fData);
  AddWeight(*model, options.fData);
  AddUsing(*model, options.fData);
  AddTarget(*model, options, options.fModel.fTarget, options.fModel.fExcept);
  InGroup(*model, "Model");
  CLI::Option* test =
      model
          ->add_option("--test", options.fModel.fTest,
                       "Share of the cases, drawn at random, that test the model; 0 for none, as "
                       "cases with a weight want it")
          ->check(IsShare)
          ->capture_default_str()
          ->type_name("SHARE");
  model
      ->add_option("--training-column", options.fModel.fTrainingColumn,
                   "Column that is 1 in the cases that train the model; the others test it")
      ->type_name("VAR")
      ->excludes(test);
  CLI::Option* folds =
      model
          ->add_option("--cross-validate", options.fModel.fFolds,
                       "Instead of test cases: so many folds, each predicted by a model that is "
                       "selected and built without it")
          ->check(WholeNumber(2, NBCrossValidation::kMostFolds))
          ->type_name("FOLDS")
          ->excludes(test)
          ->excludes("--training-column");
  model->add_option("--repeats", options.fModel.fRepeats, "With --cross-validate: so many times")
      ->check(WholeNumber(1, NBCrossValidation::kMostRepeats))
      ->capture_default_str()
      ->type_name("N")
      ->needs(folds);
  model->add_option("--seed", options.fModel.fSeed, "With --cross-validate: which folds")
      ->check(WholeNumber(0))
      ->capture_default_str()
      ->type_name("N")
      ->needs(folds);
  model
      ->add_option("--predictors", options.fModel.fPredictors,
                   "At most so many (default: as many as serve the model)")
      ->check(WholeNumber(1))
      ->type_name("N");
  AddCalibration(*model, options.fCalibration);
  AddFormat(*model, options.fResult,
            {"ChosenPredictors", "Accuracy", "ConfusionMatrix", "WorstConfusions", "Evaluation",
             "ClassEvaluation", "Calibration", "CrossValidation", "SelectionStability", "Folds"});
  AddResultOptions(*model, options.fResult);
  AddSaveOptions(*model, "predictions", options.fSave);
  CLI::Option* kept = model->add_option("--save-model", options.fSaveState,
                                        "Keep the model for predselect score: .bin or .xml");
  kept->type_name("FILE")->check(IsStateName);
  AddSignKey(*model, options, kept);
  AddExportFile(*model, options);
  model->add_option("--pmml", options.fModel.fPmml, "Write the model as PMML")->type_name("FILE");
  AddMemory(*model, " that train the model (default: auto)", options);
  AddThreads(*model, options.fThreads);
  AddJobs(*model, options);
  AddProgress(*model, options.fResult);
  AddDryRun(*model, options);
  model->footer(kModelExamples)->group(kShortVerbs);
  return model;
}

CLI::App* AddScore(CLI::App& app, Options& options) {
  CLI::App* score = app.add_subcommand("score", "Predict new data with a saved Naive Bayes model");
  AddState(*score, "--model", options, false);
  AddDataOptions(*score, options.fData);
  CLI::Option* saved = AddSaveOptions(*score, "predictions", options.fSave);
  for (const char* own : {"--only-new", "--force"}) score->get_option(own)->remove_needs(saved);
  score->add_option("--predicted", options.fScore.fPredicted, "Name of the predicted value")
      ->type_name("NAME")
      ->capture_default_str();
  score
      ->add_option("--probabilities", options.fScore.fProbabilities,
                   "Root of the names of the predicted probabilities; \"\" for none")
      ->type_name("ROOT")
      ->capture_default_str();
  score
      ->add_option("--explain", options.fScore.fExplained,
                   "Add what the N predictors that weighed most add to the log-odds of each "
                   "prediction (3 where no number follows)")
      ->check(WholeNumber(1))
      ->type_name("[N]");
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

CLI::App* AddEvaluate(CLI::App& app, Options& options) {
  CLI::App* evaluate = app.add_subcommand(
      "evaluate", "Say how good a saved Naive Bayes model is on data whose target is known");
  AddState(*evaluate, "--model", options, false);
  AddDataOptions(*evaluate, options.fData);
  AddWeight(*evaluate, options.fData);
  AddThreads(*evaluate, options.fThreads);
  AddFormat(*evaluate, options.fResult,
            {"Evaluation", "ClassEvaluation", "ConfusionMatrix", "Calibration", "EvaluatedCases"});
  AddResultOptions(*evaluate, options.fResult);
  AddProgress(*evaluate, options.fResult);
  evaluate->footer(kEvaluateExamples)->group(kShortVerbs);
  return evaluate;
}

CLI::App* AddRun(CLI::App& app, Options& options) {
  CLI::App* run = app.add_subcommand("run", "Run commands over a table");
  AddDataOptions(*run, options.fData);
  AddWeight(*run, options.fData);
  AddUsing(*run, options.fData);
  InGroup(*run, "Commands");
  CLI::Option* text =
      run->add_option("-c,--command", options.fCommandTexts,
                      "The commands to run; several are run in order, as of one text")
          ->type_name("TEXT")
          ->allow_extra_args(false);
  run->add_option("-f,--file", options.fCommandFile, "File that holds them; - is standard input")
      ->type_name("FILE")
      ->excludes(text);
  AddCalibration(*run, options.fCalibration);
  AddFormat(*run, options.fResult,
            {"PredictorSummary", "PredictorEffects", "SubsetSummary", "Classification",
             "SelectedPredictors", "ExcludedPredictors", "CaseProcessingSummary", "Evaluation",
             "ClassEvaluation", "Calibration", "CrossValidation", "SelectionStability", "Folds"},
            "PredictorSummary of SELECTPRED, SubsetSummary of NAIVEBAYES");
  AddResultOptions(*run, options.fResult);
  AddSaveOptions(*run, "new variables", options.fSave);
  CLI::Option* state =
      run->add_option("--save-state", options.fSaveState,
                      "Save what the last command's engine has counted: .bin or .xml");
  state->type_name("FILE")->check(IsStateName);
  AddSignKey(*run, options, state);
  AddExportFile(*run, options);
  run->add_option("--results", options.fResults,
                  "Write rankings and subsets as XML documents into this directory")
      ->type_name("DIR");
  run->add_option("--charts", options.fCharts,
                  "Draw charts into this directory, as SVG and PNG (with the Python package "
                  "vl-convert-python)")
      ->type_name("DIR");
  AddMemory(*run, " of a NAIVEBAYES command that states no MEMALLOCATE (default: 1024)", options);
  AddThreads(*run, options.fThreads);
  AddProgress(*run, options.fResult);
  AddDryRun(*run, options);
  run->footer(kRunExamples)->group(kLanguage);
  return run;
}

CLI::App* AddInspect(CLI::App& app, Options& options) {
  CLI::App* inspect = app.add_subcommand(
      "inspect", "Show what a state file holds: component, variables, counts, ranking or model");
  AddState(*inspect, "STATE", options, false);
  AddFormat(*inspect, options.fResult,
            {"Ranking", "Component", "Variables", "TargetCategories", "ExcludedPredictors",
             "WeightsOfEvidence"},
            "Ranking, WeightsOfEvidence, or the first that there is");
  inspect->add_flag("--weights", options.fbWeights,
                    "Show what each value of each predictor of a model says of the classes");
  AddResultOptions(*inspect, options.fResult);
  inspect->footer(kInspectExamples)->group(kLanguage);
  return inspect;
}

CLI::App* AddMerge(CLI::App& app, Options& options) {
  CLI::App* merge =
      app.add_subcommand("merge", "Bring together states that were counted over parts of the data");
  AddState(*merge, "STATE", options, true);
  InGroup(*merge, kResultsGroup);
  CLI::Option* merged = merge->add_option("-o,--output", options.fSaveState,
                                          "Write the merged state here: .bin or .xml");
  merged->required()->type_name("FILE")->check(IsStateName);
  AddSignKey(*merge, options, merged);
  merge->add_flag("--allow-equal", options.fbAllowEqual,
                  "Take states that hold the very same counts, too");
  merge->footer(kMergeExamples)->group(kLanguage);
  return merge;
}

CLI::App* AddRange(CLI::App& app, Options& options) {
  CLI::App* range = app.add_subcommand(
      "range",
      "Find the ranges and categories of a part of the data, for all parts to count alike");
  AddDataOptions(*range, options.fData);
  AddWeight(*range, options.fData);
  InGroup(*range, kResultsGroup);
  range->add_option("-o,--output", options.fSaveState, "Write the ranges here: .bin or .xml")
      ->required()
      ->type_name("FILE")
      ->check(IsStateName);
  AddPart(*range, options.fData);
  AddThreads(*range, options.fThreads);
  range->footer(kRangeExamples)->group(kLanguage);
  return range;
}

CLI::App* AddExport(CLI::App& app, Options& options) {
  CLI::App* command =
      app.add_subcommand("export", "Write a saved Naive Bayes model as PMML, ONNX, SQL, C or JSON");
  AddState(*command, "STATE", options, false);
  InGroup(*command, kResultsGroup);
  command->add_option("-o,--output", options.fExport.fFile, "Write the model here")
      ->required()
      ->type_name("FILE");
  std::vector<std::pair<std::string, std::string>> forms;
  for (const std::string& word : PredSelect::ModelFileFormats()) forms.emplace_back(word, word);
  AddChoice<std::string>(*command, "--to", options.fExport.fTo, forms,
                         "The form of the model; without it the ending of --output decides: "
                         ".pmml, .xml, .onnx, .sql, .c, .json");
  command->add_option("--table", options.fExport.fTable, "The table that the SQL query reads")
      ->capture_default_str()
      ->type_name("NAME");
  command->add_flag("--quiet", options.fResult.fbQuiet,
                    "Do not say what the form cannot say of the model");
  command->footer(kExportExamples)->group(kLanguage);
  return command;
}

CLI::App* AddView(CLI::App& app, Options& options) {
  CLI::App* view =
      app.add_subcommand("view", "Look at a state file, or a JSON document, in a browser");
  view->add_option("FILE", options.fStates,
                   "State saved by run --save-state, or a document of --format json")
      ->required()
      ->expected(1)
      ->type_name("FILE");
  AddVerifyKey(*view, options);
  view->add_option("-o,--output", options.fResult.fFile, "Write the report here instead")
      ->type_name("FILE");
  view->footer(kViewExamples)->group(kLanguage);
  return view;
}

}  // namespace PredSelectApp
