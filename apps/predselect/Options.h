// The command line as values. What verbs take stands in VerbOptions.cpp, their parsing in
// Options.cpp.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/data/FileFormat.h"
#include "host/data/ReadingOptions.h"
#include "operations/BuildModel.h"
#include "operations/DescribeTable.h"
#include "operations/RankPredictors.h"
#include "operations/ScoreTable.h"

namespace PredSelectApp {

enum class Color { kAuto, kAlways, kNever };

// Which data, and what is said of them besides the file itself.
struct DataOptions {
  std::string fFile;    // a path, or "-" for CSV on standard input
  std::string fSchema;  // Table Schema document, empty for none
  std::string fWeight;  // name of the frequency weight variable, empty for none
  // An option, empty for TARGET, and a column that it names.
  std::vector<std::pair<std::string, std::string>> fNames;
  std::vector<std::string> fLevels;      // "variable=nominal|ordinal|scale"
  std::vector<std::string> fNullTokens;  // further texts that mean null where cells are texts
  MCHost::ReadingOptions fReading;       // how the file is to be read
  bool fbStream = false;                 // read again on every pass instead of keeping in memory
  bool fbOnce = false;                   // the cases are gone over once
  std::string fUsing;                    // ranges of the whole whose part this is, empty for none
  int fPart = -1;                        // its number there; -1: nobody has said
  // What cells in memory may take in bytes; a larger table is streamed.
  std::size_t fMaxKeptBytes = std::numeric_limits<std::size_t>::max();
  bool fbSaved = false;  // they are written again with what is added to them
};

// Where the table goes with its new variables, and what of it.
struct SaveOptions {
  std::string fFile;               // empty: it is not written, but by score: where the results go
  bool fbOnlyNew = false;          // without the columns of the data
  std::vector<std::string> fKeys;  // but with these, before the new ones
  bool fbForce = false;            // over a file that is there
};

// Where results go and how they look.
struct ResultOptions {
  // Text, JSON, or the records of one kind of table.
  MCHost::FileFormat fFormat = MCHost::FileFormat::kText;
  std::string fTable;  // subtype of that table; empty: the main one
  std::string fFile;   // empty or "-": standard output
  Color fColor = Color::kAuto;
  bool fbQuiet = false;
  bool fbProgress = true;
  bool fbPager = true;  // for long pages on a terminal
};

struct Options {
  enum Action {
    kNone,
    kRun,
    kRank,
    kModel,
    kDescribe,
    kInspect,
    kScore,
    kEvaluate,
    kMerge,
    kExport,
    kView,
    kRange
  };
  static constexpr double kAutoMemory = -1.0;

  Action fAction = kNone;
  DataOptions fData;
  ResultOptions fResult;
  SaveOptions fSave;
  std::vector<std::string> fCommandTexts;  // -c
  std::string fCommandFile;                // -f, "-" for standard input
  std::string fSaveState;                  // run: empty for none; merge: the merged component
  std::string fResults;                    // run: directory of the result documents, empty for none
  std::string fCharts;                     // run: directory of the charts' files, empty for none
  std::string fSignKey;                    // file of the key that it is signed with, empty for none
  std::string fVerifyKey;                  // the same of the key that fStates must be signed with
  std::vector<std::string> fStates;        // export, inspect, score and evaluate: one; merge: more
  bool fbAllowEqual = false;               // merge: states of the same counts are taken, too
  PredSelect::ScoreRequest fScore;
  bool fbWeights = false;  // inspect: the tables of a model, too
  std::string fDrift;      // score: file of what differs from the training data, empty for none
  MCHost::CalibrationWish fCalibration;  // model and run
  PredSelect::ExportRequest fExport;     // export, model and run: no file for none
  double fMemory = 0.0;  // run and model: kilobytes for table and cases, 0 for none said
  int fThreads = 0;      // all but inspect and merge: 0 for as many as there are processors
  PredSelect::DescribeRequest fDescribe;
  PredSelect::RankRequest fRank;
  PredSelect::ModelRequest fModel;
  bool fbDryRun = false;            // run, rank, model and score: say what would be done
  int fJobs = 1;                    // rank and model: processes at work on the parts of the data
  int fServing = 0;                 // above 0: this is one of so many of them
  std::vector<std::string> fWords;  // the whole command line
  bool fbShowCommand = false;       // rank and model: show the command instead of running it
  std::string fShown;               // for kNone: a text that was asked for, such as help
};

// Reads the command line. Throws UsageError for one that cannot be taken; what was read of it until
// then is in the options.
void ParseOptions(int argc, char** argv, Options& options);

}  // namespace PredSelectApp
