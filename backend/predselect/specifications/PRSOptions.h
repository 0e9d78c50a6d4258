// What the subcommands of a command ask for, as plain values. A value that is not asked for is the
// one given here: grammar, help and specifications take their defaults from these structures.
#pragma once

#include <string>

#include "feature/MCFSCommon.h"
#include "host/command/KovaVarName.h"

// A threshold, and the user's own digits; these are empty when it was not typed.
struct PRSThreshold {
  double fValue;
  std::string fTyped{};
};

// Percentages in percent.
struct PRSScreening {
  bool fbOn = true;  // of SELECTPRED; the parser switches it off for a NAIVEBAYES that has none
  PRSThreshold fPctMissing{70.0};
  PRSThreshold fPctEqual{95.0};
  PRSThreshold fPctUnequal{90.0};
  PRSThreshold fCoeffVariate{0.001};
  PRSThreshold fStdDev{0.0};
};

// Criteria of both commands.
struct PRSCommonCriteria {
  int fShowUnselect = 0;
  double fTimer = 5.0;  // minutes; 0 for no limit
};

// Criteria of SELECTPRED.
struct PRSUniCriteria {
  int fSize = 0;  // 0: automatic
  MCFSCommon::RankCriteria fCriterion = MCFSCommon::kPearson;
  double fPCutOff = 0.05;
  bool fbExactPValues = false;
};

// Criteria of NAIVEBAYES.
struct PRSMultiCriteria {
  static constexpr double kLeastMemory = 4.0;

  int fBins = 10;
  double fMemAllocate = 1024.0;  // kilobytes
  double fMemOffered = 0.0;      // what the session gives in its place; 0: nothing
};

// Training cases are drawn, or marked by a variable.
struct PRSSample {
  double fPercent = 0.0;  // 0: none are drawn
  int fVariable = -1;     // -1: no variable marks them

  bool IsSplit() const { return fPercent > 0.0 || fVariable >= 0; }
};

struct PRSSubset {
  int fMaxSize = 0;  // 0: automatic; below: none is set
  bool fbPseudoBIC = false;
  bool fbTestData = false;
  int fExactSize = 0;  // 0: none is set

  // All predictors are kept.
  bool IsSelectionOff() const { return fMaxSize < 0 && fExactSize < 1; }
};

struct PRSValidation {
  int fFolds = 0;  // 0: the selection is not cross-validated
  int fRepeats = 1;
  int fSeed = 1;
};

// Saved variables; an empty name for none.
struct PRSSave {
  KovaVarName fPredVal;
  bool fbPredValSuffix = false;  // the name may be extended until it is new
  KovaVarName fPredProbRoot;
  int fPredProbNumber = 25;
};

struct PRSPrint {
  bool fbCPS = true;
  bool fbExclude = true;
  bool fbSummary = true;
  bool fbSelect = true;
  bool fbClassify = true;
  bool fbUncert = false;
  bool fbEffects = false;
  bool fbEvaluation = false;
};

struct PRSPlot {
  bool fbSummary = false;
  bool fbUncert = false;
};

struct PRSOptions {
  PRSScreening fScreening;
  PRSCommonCriteria fCommonCriteria;
  PRSUniCriteria fUniCriteria;
  PRSMultiCriteria fMultiCriteria;
  PRSSample fSample;
  PRSSubset fSubset;
  PRSValidation fValidation;
  bool fbMissingExclude = true;  // user-missing values are missing
  PRSSave fSave;
  PRSPrint fPrint;
  PRSPlot fPlot;
};
